// The device tree: finding nodes, looking for new ones, waiting for installations.
#include "conformance/statement.h"

using namespace conformance;

namespace {

const std::wstring Modem = L"USB\\VID_3A9D&PID_9001\\1";
constexpr ULONG NoSuchFlag = 0x40000000;

struct Located {
    DEVINST Node = 0;
    CONFIGRET Result = CR_FAILURE;
};

Located Locate(std::wstring id, ULONG flags = CM_LOCATE_DEVNODE_NORMAL) {
    Located located;
    located.Result = CM_Locate_DevNodeW(&located.Node, id.data(), flags);
    return located;
}

DEVINST Root() {
    DEVINST node = 0;
    CM_Locate_DevNodeW(&node, nullptr, CM_LOCATE_DEVNODE_NORMAL);
    return node;
}

} // namespace

STATEMENT(J01, "CM_Locate_DevNodeW", Documented, "ReenumerateDeviceTree",
          "Without an ID the root node is found") {
    DEVINST node = 0;
    return Returns(CM_Locate_DevNodeW(&node, nullptr, CM_LOCATE_DEVNODE_NORMAL), CR_SUCCESS);
}

STATEMENT(J02, "CM_Locate_DevNodeW", Documented, "-", "A device that is there is found") {
    return Returns(Locate(world.SomeDevice().Id).Result, CR_SUCCESS);
}

STATEMENT(J03, "CM_Locate_DevNodeW", Documented, "-",
          "A device that is not plugged is not found: CR_NO_SUCH_DEVNODE") {
    world.AddDevice({.Id = Modem, .Present = false});
    return Returns(Locate(Modem).Result, CR_NO_SUCH_DEVNODE);
}

STATEMENT(J04, "CM_Locate_DevNodeW", Documented, "-",
          "CM_LOCATE_DEVNODE_PHANTOM finds it all the same") {
    world.AddDevice({.Id = Modem, .Present = false});
    return Returns(Locate(Modem, CM_LOCATE_DEVNODE_PHANTOM).Result, CR_SUCCESS);
}

STATEMENT(J05, "CM_Locate_DevNodeW", Documented, "-",
          "A device that never was: CR_NO_SUCH_DEVNODE") {
    return Returns(Locate(L"USB\\VID_3A9D&PID_90FF\\GONE").Result, CR_NO_SUCH_DEVNODE);
}

STATEMENT(J06, "CM_Locate_DevNodeW", Documented, "-",
          "A text that is no instance ID: CR_INVALID_DEVICE_ID") {
    return Returns(Locate(L"nonsense").Result, CR_INVALID_DEVICE_ID);
}

STATEMENT(J07, "CM_Locate_DevNodeW", Documented, "-", "Unknown flags: CR_INVALID_FLAG") {
    DEVINST node = 0;
    return Returns(CM_Locate_DevNodeW(&node, nullptr, NoSuchFlag), CR_INVALID_FLAG);
}

STATEMENT(J08, "CM_Reenumerate_DevNode", Documented, "ReenumerateDeviceTree",
          "Looking through the tree from its root succeeds") {
    world.NeedsAdministrator();
    return Returns(CM_Reenumerate_DevNode(Root(), CM_REENUMERATE_NORMAL), CR_SUCCESS);
}

STATEMENT(J09, "CM_Reenumerate_DevNode", Documented, "-",
          "Looking through the tree from no node: CR_INVALID_DEVNODE") {
    return Returns(CM_Reenumerate_DevNode(0, CM_REENUMERATE_NORMAL), CR_INVALID_DEVNODE);
}

STATEMENT(J10, "CM_Reenumerate_DevNode", Documented, "-", "Unknown flags: CR_INVALID_FLAG") {
    return Returns(CM_Reenumerate_DevNode(Root(), NoSuchFlag), CR_INVALID_FLAG);
}

STATEMENT(J11, "CMP_WaitNoPendingInstallEvents", Documented, "PreInstall",
          "Nothing is being installed: WAIT_OBJECT_0") {
    return Returns(CMP_WaitNoPendingInstallEvents(0), WAIT_OBJECT_0);
}

STATEMENT(J12, "CM_Locate_DevNodeW", Documented, "-", "No place for the node: CR_INVALID_POINTER") {
    return Returns(CM_Locate_DevNodeW(nullptr, nullptr, CM_LOCATE_DEVNODE_NORMAL),
                   CR_INVALID_POINTER);
}
