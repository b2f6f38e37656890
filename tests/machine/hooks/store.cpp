// The INF store and what installs from it: setupapi's copying, newdev's two entry points, the
// device tree.
#include "machine/device_sets.h"
#include "machine/inf_text.h"
#include "machine/library_functions.h"
#include "machine/sandbox.h"

#include <algorithm>

namespace machine {

namespace {

std::wstring StoreFolder(const State& state) {
    return state.WindowsFolder + L"\\INF\\";
}

std::wstring PnfOf(const std::wstring& inf) {
    return inf.substr(0, inf.rfind(L'.')) + L".PNF";
}

// Waits as long as the test wants this copy to take.
void TakeTime(State& state, int copy) {
    Store& store = state.InfStore;
    if (store.HangingCopies.count(copy) != 0) {
        state.Threads.Wait(
            "SetupCopyOEMInfW", [&store, copy] { return store.HangingCopies.count(copy) == 0; },
            std::nullopt);
    }
    if (const auto time = store.CopyTimes.find(copy); time != store.CopyTimes.end()) {
        state.Threads.Sleep("SetupCopyOEMInfW", static_cast<std::uint32_t>(time->second.count()));
    }
}

BOOL WINAPI HookSetupCopyOEMInfW(PCWSTR source, PCWSTR location, DWORD mediaType, DWORD style,
                                 PWSTR destination, DWORD size, PDWORD needed, PWSTR* component) {
    Call call("SetupCopyOEMInfW", Counting::Always,
              {source, location, mediaType, Hex(style), size});
    if (call.Fails()) {
        return FALSE;
    }
    State& state = call.Inside();
    TakeTime(state, ++state.InfStore.Copies);
    if (!Exists(state, source)) {
        return call.Fail(FALSE, ERROR_FILE_NOT_FOUND);
    }
    if (!ReadInf(state, source)) {
        return call.Fail(FALSE, ERROR_WRONG_INF_STYLE);
    }
    const std::wstring target = StoreFolder(state) + StageInf(state, source);
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(target.size() + 1);
    }
    if (destination == nullptr) {
        return TRUE;
    }
    if (size < target.size() + 1) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::copy_n(target.c_str(), target.size() + 1, destination);
    if (component != nullptr) {
        *component = destination + StoreFolder(state).size();
    }
    return TRUE;
}

bool InUse(const State& state, const std::wstring& path) {
    return std::any_of(state.Nodes.begin(), state.Nodes.end(), [&](const Node& node) {
        return node.Description.Present && !node.Description.Removed &&
               SameText(node.Description.InstalledInf, path);
    });
}

BOOL WINAPI HookSetupUninstallOEMInfW(PCWSTR name, DWORD flags, PVOID) {
    Call call("SetupUninstallOEMInfW", Counting::Always, {name, Hex(flags)});
    if (call.Fails()) {
        return FALSE;
    }
    State& state = call.Inside();
    const std::wstring path = StoreFolder(state) + name;
    if (std::wstring_view(name).find(L'\\') != std::wstring_view::npos) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (!Exists(state, path)) {
        return call.Fail(FALSE, ERROR_FILE_NOT_FOUND);
    }
    if (!StartsWith(name, L"oem")) {
        return call.Fail(FALSE, ERROR_NOT_AN_INSTALLED_OEM_INF);
    }
    if ((flags & SUOI_FORCEDELETE) == 0 && InUse(state, path)) {
        return call.Fail(FALSE, ERROR_INF_IN_USE_BY_DEVICES);
    }
    if (IsLocked(state, path)) {
        return call.Fail(FALSE, ERROR_SHARING_VIOLATION);
    }
    RemoveFile(state, path);
    RemoveFile(state, PnfOf(path));
    return TRUE;
}

bool HasId(const Device& device, const std::wstring& id) {
    const auto same = [&id](const std::wstring& own) { return SameText(own, id); };
    return std::any_of(device.HardwareIds.begin(), device.HardwareIds.end(), same) ||
           std::any_of(device.CompatibleIds.begin(), device.CompatibleIds.end(), same);
}

std::vector<Node*> PresentDevices(State& state, const std::wstring& id) {
    std::vector<Node*> found;
    for (Node& node : state.Nodes) {
        if (node.Description.Present && !node.Description.Removed && HasId(node.Description, id)) {
            found.push_back(&node);
        }
    }
    return found;
}

// 0 when the INF may be installed on the present devices with this ID.
DWORD InstallError(State& state, const std::wstring& id, const std::wstring& inf,
                   const std::vector<Node*>& devices) {
    if (!Exists(state, inf)) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (devices.empty()) {
        return ERROR_NO_SUCH_DEVINST;
    }
    const std::optional<InfContents> contents = ReadInf(state, inf);
    return contents && contents->Lists(id) ? 0 : ERROR_NO_DRIVER_SELECTED;
}

BOOL WINAPI HookUpdateDriver(HWND, LPCWSTR id, LPCWSTR inf, DWORD flags, PBOOL reboot) {
    Call call("UpdateDriverForPlugAndPlayDevicesW", Counting::Always, {id, inf, Hex(flags)});
    if (call.Fails()) {
        return FALSE;
    }
    constexpr DWORD KnownFlags = 7;
    if ((flags & ~KnownFlags) != 0) {
        return call.Fail(FALSE, ERROR_INVALID_FLAGS);
    }
    State& state = call.Inside();
    const std::vector<Node*> devices = PresentDevices(state, id);
    const auto answer = OrderedAnswer(state, id, inf);
    const DWORD error = answer ? answer->Error : InstallError(state, id, inf, devices);
    if (error != 0) {
        return call.Fail(FALSE, error);
    }
    for (Node* node : devices) {
        InstallOn(state, *node, inf);
    }
    if (reboot != nullptr) {
        *reboot = answer && answer->Reboot != 0 ? TRUE : FALSE;
    }
    return TRUE;
}

BOOL WINAPI HookInstallSelectedDriver(HWND, HDEVINFO handle, LPCWSTR, BOOL backup, PDWORD reboot) {
    Call call("InstallSelectedDriver", Counting::Always, {Named(handle), backup});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    if (set == nullptr) {
        return FALSE;
    }
    if (set->Selected == nullptr) {
        return call.Fail(FALSE, ERROR_NO_DEVICE_SELECTED);
    }
    if (!set->Selected->SelectedDriver) {
        return call.Fail(FALSE, ERROR_NO_DRIVER_SELECTED);
    }
    const DriverEntry& driver = *set->Selected->SelectedDriver;
    const auto answer = OrderedAnswer(call.Inside(), driver.HardwareId, driver.InfPath);
    if (answer && answer->Error != 0) {
        return call.Fail(FALSE, answer->Error);
    }
    InstallOn(call.Inside(), *set->Selected->Owner, driver.InfPath);
    if (reboot != nullptr) {
        *reboot = answer ? answer->Reboot : 0;
    }
    return TRUE;
}

constexpr DEVINST RootNode = 1;

CONFIGRET WINAPI HookCM_Locate_DevNodeW(PDEVINST node, DEVINSTID_W id, ULONG flags) {
    Call call("CM_Locate_DevNodeW", Counting::Always, {id, flags});
    if (call.Fails()) {
        return CR_FAILURE;
    }
    if (id == nullptr || *id == L'\0') {
        *node = RootNode;
        return CR_SUCCESS;
    }
    const Node* found = FindNode(call.Inside(), id);
    const bool wanted = found != nullptr && !found->Description.Removed &&
                        (found->Description.Present || (flags & CM_LOCATE_DEVNODE_PHANTOM) != 0);
    *node = wanted ? found->DevInst : 0;
    return wanted ? CR_SUCCESS : CR_NO_SUCH_DEVNODE;
}

CONFIGRET WINAPI HookCM_Reenumerate_DevNode(DEVINST node, ULONG flags) {
    Call call("CM_Reenumerate_DevNode", Counting::Always, {flags});
    if (call.Fails()) {
        return CR_FAILURE;
    }
    State& state = call.Inside();
    if (node != RootNode) {
        return CR_INVALID_DEVNODE;
    }
    for (Node& known : state.Nodes) {
        Device& device = known.Description;
        if (device.Removed && device.Present && device.ReturnsAfterRemoval) {
            device.Removed = false;
            device.Class.reset();
            device.ConfigFlags = 0;
            device.InstalledInf.clear();
        }
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

FARPROC FindInstallFunction(std::wstring_view library, std::string_view name) {
    if (library == L"newdev" && name == "UpdateDriverForPlugAndPlayDevicesW") {
        return AddressOf(&HookUpdateDriver);
    }
    if (library == L"newdev" && name == "InstallSelectedDriver") {
        return AddressOf(&HookInstallSelectedDriver);
    }
    if (library == L"setupapi" && name == "SetupUninstallOEMInfW") {
        return AddressOf(&HookSetupUninstallOEMInfW);
    }
    return nullptr;
}

void InstallOn(State& state, Node& node, const std::wstring& infPath) {
    const std::optional<InfContents> inf = ReadInf(state, infPath);
    if (inf && !inf->Class.empty()) {
        node.Description.Class = inf->Class;
    }
    constexpr DWORD Settled = CONFIGFLAG_REINSTALL | CONFIGFLAG_FAILEDINSTALL;
    node.Description.ConfigFlags = node.Description.ConfigFlags.value_or(0) & ~Settled;
    node.Description.InstalledInf = infPath;
    if (!StartsWith(infPath, StoreFolder(state)) && Exists(state, infPath)) {
        StageInf(state, infPath);
    }
}

std::wstring StageInf(State& state, const std::wstring& sourcePath) {
    const std::string bytes = ReadBytes(state, sourcePath);
    for (int number = 0;; ++number) {
        const std::wstring name = L"oem" + std::to_wstring(number) + L".inf";
        const std::wstring path = StoreFolder(state) + name;
        if (!Exists(state, path)) {
            WriteBytes(state, path, bytes);
            WriteBytes(state, PnfOf(path), "precompiled");
            return name;
        }
        if (ReadBytes(state, path) == bytes) {
            // The same INF keeps the name that it has in the store.
            return name;
        }
    }
}

std::optional<Machine::InstallAnswer> OrderedAnswer(State& state, const std::wstring& id,
                                                    const std::wstring& infPath) {
    for (Machine::InstallAnswer& answer : state.InstallAnswers) {
        if (answer.Times > 0 && (answer.Id.empty() || SameText(answer.Id, id)) &&
            (answer.InfName.empty() || SameText(answer.InfName, FileName(infPath)))) {
            --answer.Times;
            return answer;
        }
    }
    return std::nullopt;
}

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupCopyOEMInfW, HookSetupCopyOEMInfW);
MACHINE_HOOK(SetupUninstallOEMInfW, HookSetupUninstallOEMInfW);
MACHINE_HOOK(CM_Locate_DevNodeW, HookCM_Locate_DevNodeW);
MACHINE_HOOK(CM_Reenumerate_DevNode, HookCM_Reenumerate_DevNode);
MACHINE_HOOK(CMP_WaitNoPendingInstallEvents, HookWaitNoPendingInstallEvents);
