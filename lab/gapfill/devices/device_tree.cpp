// The device tree as a whole.
#include "replacements.h"

#include "devices/modem_bus.h"
#include "devices/nodes.h"
#include "journal.h"
#include "originals.h"
#include "wine_version.h"

#include <algorithm>
#include <cwchar>

namespace {

// Any number that no set of devices uses: Wine's device handles count up from zero.
constexpr DEVINST RootNode = 0x0F0F0F0F;
constexpr DWORD PollInterval = 20;

// Enumerator, device and instance.
bool IsInstanceId(const std::wstring& text) {
    return std::count(text.begin(), text.end(), L'\\') == 2;
}

bool NamesRoot(const wchar_t* instanceId) {
    return instanceId == nullptr || *instanceId == L'\0' ||
           _wcsicmp(instanceId, L"HTREE\\ROOT\\0") == 0;
}

// Lives as long as the process: a node's handle is good only as long as its set.
HDEVINFO LocatedNodes() {
    static const HDEVINFO set = SETUPAPI(SetupDiCreateDeviceInfoList)(nullptr, nullptr);
    return set;
}

} // namespace

// Windows: CR_SUCCESS for the root node and every node that exists; an absent one only with the
// flag for phantoms. Wine 8: CR_FAILURE, always.
CONFIGRET WINAPI FilledLocateDevNode(PDEVINST node, DEVINSTID_W instanceId, ULONG flags) {
    Enter("CM_Locate_DevNodeW", instanceId == nullptr ? L"root" : instanceId);
    if (node == nullptr) {
        return CR_INVALID_POINTER;
    }
    if ((flags & ~ULONG{CM_LOCATE_DEVNODE_BITS}) != 0) {
        return CR_INVALID_FLAG;
    }
    if (WineIsNewer() && SETUPAPI(CM_Locate_DevNodeW)(node, instanceId, flags) == CR_SUCCESS) {
        NoteNoLongerNeeded("CM_Locate_DevNodeW");
        return CR_SUCCESS;
    }
    if (NamesRoot(instanceId)) {
        *node = RootNode;
        return CR_SUCCESS;
    }
    if (!IsInstanceId(instanceId)) {
        return CR_INVALID_DEVICE_ID;
    }
    const bool phantomWelcome = (flags & CM_LOCATE_DEVNODE_PHANTOM) != 0;
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    if (!NodeExists(instanceId) || (!phantomWelcome && !NodeIsPresent(instanceId)) ||
        !SETUPAPI(SetupDiOpenDeviceInfoW)(LocatedNodes(), instanceId, nullptr, 0, &device)) {
        return CR_NO_SUCH_DEVNODE;
    }
    *node = device.DevInst;
    return CR_SUCCESS;
}

// Windows: the buses below the node are looked through; nodes that were removed while plugged come
// back. CR_SUCCESS. Wine 8: CR_FAILURE, always. Here the modem's bus is looked through whichever
// node is named: it is the only one on a machine of the lab.
CONFIGRET WINAPI FilledReenumerateDevNode(DEVINST node, ULONG flags) {
    Enter("CM_Reenumerate_DevNode");
    if (node == 0) {
        return CR_INVALID_DEVNODE;
    }
    if ((flags & ~ULONG{CM_REENUMERATE_BITS}) != 0) {
        return CR_INVALID_FLAG;
    }
    if (WineIsNewer() && SETUPAPI(CM_Reenumerate_DevNode)(node, flags) == CR_SUCCESS) {
        NoteNoLongerNeeded("CM_Reenumerate_DevNode");
    }
    ScanBus();
    return CR_SUCCESS;
}

// Windows: waits until no node that has arrived is still being installed; does not wait for nodes
// that are yet to arrive. Wine 8: returns at once. The bus driver is at work for as long as the
// system installs and starts the node that it has just shown.
DWORD WINAPI FilledWaitNoPendingInstallEvents(DWORD timeout) {
    Enter("CMP_WaitNoPendingInstallEvents");
    const DWORD begin = GetTickCount();
    while (BusIsWorking()) {
        if (GetTickCount() - begin >= timeout) {
            return WAIT_TIMEOUT;
        }
        Sleep(PollInterval);
    }
    return WAIT_OBJECT_0;
}
