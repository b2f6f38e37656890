// newdev.dll: installing drivers on devices.
#include "machine/files/disk.h"
#include "machine/hooks/device_sets.h"
#include "machine/hooks/inf_store.h"
#include "machine/hooks/library_functions.h"
#include "machine/inf_text.h"

#include <algorithm>

namespace machine {

namespace {

// The answer that the test ordered for this installation, used up by asking.
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

// A key below that of the class that no other device has.
std::wstring NewDriverKey(const State& state, const Device& device) {
    for (int number = 0;; ++number) {
        const std::wstring digits = L"000" + std::to_wstring(number);
        const std::wstring key =
            GuidText(ClassGuidOf(device)) + L"\\" + digits.substr(digits.size() - 4);
        const bool taken =
            std::any_of(state.Nodes.begin(), state.Nodes.end(),
                        [&key](const Node& node) { return node.Description.Driver == key; });
        if (!taken) {
            return key;
        }
    }
}

// What an installation leaves on a device.
void InstallOn(State& state, Node& node, const std::wstring& infPath) {
    Device& device = node.Description;
    const std::optional<InfContents> inf = ReadInf(state, infPath);
    if (inf && !inf->Class.empty()) {
        device.Class = inf->Class;
    }
    constexpr DWORD Settled = CONFIGFLAG_REINSTALL | CONFIGFLAG_FAILEDINSTALL;
    device.ConfigFlags = device.ConfigFlags.value_or(0) & ~Settled;
    device.InstalledInf = infPath;
    device.Driver.clear();
    device.Driver = NewDriverKey(state, device);
    if (StartsWith(infPath, StoreFolder(state))) {
        device.StoredInf = infPath;
    } else if (Exists(state, infPath)) {
        device.StoredInf = StoreFolder(state) + StageInf(state, infPath);
    }
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

// 0 when the INF may be installed on the present devices with this ID. By force, or where there is
// no driver yet: nothing is better than the driver that a device has.
DWORD InstallError(State& state, const std::wstring& id, const std::wstring& inf, DWORD flags,
                   const std::vector<Node*>& devices) {
    if (!Exists(state, inf)) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (devices.empty()) {
        return ERROR_NO_SUCH_DEVINST;
    }
    const std::optional<InfContents> contents = ReadInf(state, inf);
    if (!contents || !contents->Lists(id)) {
        return ERROR_NO_DRIVER_SELECTED;
    }
    const bool wanted = (flags & INSTALLFLAG_FORCE) != 0 ||
                        std::any_of(devices.begin(), devices.end(), [](const Node* node) {
                            return node->Description.Driver.empty();
                        });
    return wanted ? ERROR_SUCCESS : ERROR_NO_MORE_ITEMS;
}

BOOL WINAPI HookUpdateDriver(HWND, LPCWSTR id, LPCWSTR inf, DWORD flags, PBOOL reboot) {
    Call call("UpdateDriverForPlugAndPlayDevicesW", Counting::Always, {id, inf, Hex(flags)});
    if (call.Fails()) {
        return FALSE;
    }
    if (id == nullptr || inf == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    constexpr DWORD KnownFlags =
        INSTALLFLAG_FORCE | INSTALLFLAG_READONLY | INSTALLFLAG_NONINTERACTIVE;
    if ((flags & ~KnownFlags) != 0) {
        return call.Fail(FALSE, ERROR_INVALID_FLAGS);
    }
    State& state = call.Inside();
    const std::vector<Node*> devices = PresentDevices(state, id);
    const auto answer = OrderedAnswer(state, id, inf);
    const DWORD error = answer ? answer->Error : InstallError(state, id, inf, flags, devices);
    if (error != ERROR_SUCCESS) {
        return call.Fail(FALSE, error);
    }
    for (Node* node : devices) {
        if ((flags & INSTALLFLAG_FORCE) != 0 || node->Description.Driver.empty()) {
            InstallOn(state, *node, inf);
        }
    }
    if (reboot != nullptr) {
        *reboot = answer && answer->Reboot != 0 ? TRUE : FALSE;
    }
    return call.Succeed(TRUE);
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
    return call.Succeed(TRUE);
}

} // namespace

FARPROC FindNewDevFunction(std::string_view name) {
    if (name == "UpdateDriverForPlugAndPlayDevicesW") {
        return AddressOf(&HookUpdateDriver);
    }
    return name == "InstallSelectedDriver" ? AddressOf(&HookInstallSelectedDriver) : nullptr;
}

} // namespace machine
