// The device tree: finding nodes, looking for new ones, waiting for installations.
#include "machine/call.h"

#include <algorithm>

namespace machine {

namespace {

constexpr DEVINST RootNode = 1;

bool IsInstanceId(std::wstring_view text) {
    return std::count(text.begin(), text.end(), L'\\') >= 2;
}

CONFIGRET Locate(State& state, std::wstring_view id, ULONG flags, DEVINST& node) {
    if (id.empty()) {
        node = RootNode;
        return CR_SUCCESS;
    }
    if (!IsInstanceId(id)) {
        return CR_INVALID_DEVICE_ID;
    }
    const Node* found = FindNode(state, id);
    const bool wanted = found != nullptr && !found->Description.Removed &&
                        (found->Description.Present || (flags & CM_LOCATE_DEVNODE_PHANTOM) != 0);
    node = wanted ? found->DevInst : 0;
    return wanted ? CR_SUCCESS : CR_NO_SUCH_DEVNODE;
}

CONFIGRET WINAPI HookCM_Locate_DevNodeW(PDEVINST node, DEVINSTID_W id, ULONG flags) {
    Call call("CM_Locate_DevNodeW", Counting::Always, {id, flags});
    if (call.Fails()) {
        return CR_FAILURE;
    }
    if (node == nullptr) {
        return CR_INVALID_POINTER;
    }
    if ((flags & ~ULONG{CM_LOCATE_DEVNODE_BITS}) != 0) {
        return CR_INVALID_FLAG;
    }
    return Locate(call.Inside(), id == nullptr ? L"" : id, flags, *node);
}

// A plugged device that was removed is seen again, as one that nobody knows.
void ShowAgain(Device& device) {
    if (device.Removed && device.Present && device.ReturnsAfterRemoval) {
        device.Removed = false;
        device.Class.reset();
        device.ConfigFlags = 0;
        device.InstalledInf.clear();
        device.StoredInf.clear();
        device.Driver.clear();
        device.FriendlyName.clear();
    }
}

CONFIGRET WINAPI HookCM_Reenumerate_DevNode(DEVINST node, ULONG flags) {
    Call call("CM_Reenumerate_DevNode", Counting::Always, {flags});
    if (call.Fails()) {
        return CR_FAILURE;
    }
    if ((flags & ~ULONG{CM_REENUMERATE_BITS}) != 0) {
        return CR_INVALID_FLAG;
    }
    State& state = call.Inside();
    if (node != RootNode) {
        return CR_INVALID_DEVNODE;
    }
    for (Node& known : state.Nodes) {
        ShowAgain(known.Description);
    }
    // A copy: an action may add actions.
    const auto actions = state.AtReenumeration[++state.Reenumerations];
    for (const Action& action : actions) {
        action();
    }
    return CR_SUCCESS;
}

DWORD WINAPI HookWaitNoPendingInstallEvents(DWORD timeout) {
    Call call("CMP_WaitNoPendingInstallEvents", Counting::Always,
              {timeout == INFINITE ? "INFINITE" : std::to_string(timeout)});
    if (call.Fails()) {
        return WAIT_FAILED;
    }
    State& state = call.Inside();
    const auto pending = static_cast<DWORD>(state.InfStore.PendingTime.count());
    if (pending == 0) {
        return WAIT_OBJECT_0;
    }
    state.Threads.Sleep("CMP_WaitNoPendingInstallEvents", std::min(pending, timeout));
    return pending <= timeout ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

} // namespace

} // namespace machine

using namespace machine;
MACHINE_HOOK(CM_Locate_DevNodeW, HookCM_Locate_DevNodeW);
MACHINE_HOOK(CM_Reenumerate_DevNode, HookCM_Reenumerate_DevNode);
MACHINE_HOOK(CMP_WaitNoPendingInstallEvents, HookWaitNoPendingInstallEvents);
