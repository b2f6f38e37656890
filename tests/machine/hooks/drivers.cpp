// Driver lists, selected drivers, install parameters, class installer calls.
#include "machine/device_sets.h"
#include "machine/inf_text.h"
#include "machine/sandbox.h"

#include <algorithm>
#include <cstring>

namespace machine {

namespace {

static_assert(sizeof(SP_DRVINFO_DATA_V2_W) == 1568);
static_assert(sizeof(SP_DRVINFO_DETAIL_DATA_W) == 1584);
static_assert(sizeof(SP_CLASSINSTALL_HEADER) == 8);
static_assert(sizeof(SP_PROPCHANGE_PARAMS) == 20);
static_assert(sizeof(SP_REMOVEDEVICE_PARAMS) == 16);

struct Target {
    DeviceSet* Set = nullptr;
    SetMember* Member = nullptr;
};

// The call's set and element (or the set itself); no member: the call has its error.
Target TargetOf(Call& call, HDEVINFO handle, const SP_DEVINFO_DATA* data) {
    Target target;
    target.Set = call.Fails() ? nullptr : SetOf(call, handle);
    target.Member = target.Set == nullptr ? nullptr : MemberOrGlobal(call, *target.Set, data);
    return target;
}

WideTexts IdsOf(const Device& device) {
    WideTexts ids = device.HardwareIds;
    ids.insert(ids.end(), device.CompatibleIds.begin(), device.CompatibleIds.end());
    return ids;
}

std::vector<DriverEntry> CompatibleDrivers(const State& state, const Device& device) {
    if (!device.Drivers) {
        return StoreDriversFor(state, IdsOf(device));
    }
    std::vector<DriverEntry> drivers = *device.Drivers;
    for (DriverEntry& driver : drivers) {
        if (driver.HardwareId.empty() && !device.HardwareIds.empty()) {
            driver.HardwareId = device.HardwareIds.front();
        }
    }
    return drivers;
}

// All drivers of the INF that the install parameters name; false with the call's error.
bool DriversOfSingleInf(Call& call, const SetMember& member, std::vector<DriverEntry>& drivers) {
    const std::wstring path = member.Install.DriverPath;
    if (!Exists(call.Inside(), path)) {
        return call.Fail(false, ERROR_FILE_NOT_FOUND);
    }
    const std::optional<InfContents> inf = ReadInf(call.Inside(), path);
    if (!inf) {
        return call.Fail(false, ERROR_GENERAL_SYNTAX);
    }
    for (const InfModel& model : inf->Models) {
        drivers.push_back({path, model.Ids.empty() ? L"" : model.Ids.front(), model.Description});
    }
    return true;
}

BOOL WINAPI HookSetupDiBuildDriverInfoList(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD type) {
    Call call("SetupDiBuildDriverInfoList", Counting::Always, {DeviceName(handle, data), type});
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    const bool compatible = type == SPDIT_COMPATDRIVER;
    if ((!compatible && type != SPDIT_CLASSDRIVER) || (compatible && data == nullptr)) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    DriverList list{true, {}};
    if (compatible) {
        list.Entries = CompatibleDrivers(call.Inside(), target.Member->Owner->Description);
    } else if ((target.Member->Install.Flags & DI_ENUMSINGLEINF) != 0 &&
               !DriversOfSingleInf(call, *target.Member, list.Entries)) {
        return FALSE;
    }
    target.Member->Lists[type] = std::move(list);
    return TRUE;
}

BOOL WINAPI HookSetupDiDestroyDriverInfoList(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD type) {
    Call call("SetupDiDestroyDriverInfoList", Counting::Never, {DeviceName(handle, data), type},
              Telling::Aside);
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return call.Fails() ? TRUE : FALSE;
    }
    target.Member->Lists.erase(type);
    return TRUE;
}

void CopyText(std::wstring_view text, WCHAR* buffer, std::size_t capacity) {
    const std::size_t length = std::min(text.size(), capacity - 1);
    std::copy_n(text.data(), length, buffer);
    buffer[length] = L'\0';
}

BOOL WINAPI HookSetupDiEnumDriverInfoW(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD type,
                                       DWORD index, PSP_DRVINFO_DATA_V2_W driver) {
    Call call("SetupDiEnumDriverInfoW", Counting::Always, {DeviceName(handle, data), type, index});
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    const bool second = driver != nullptr && driver->cbSize == sizeof(SP_DRVINFO_DATA_V2_W);
    if (driver == nullptr || (!second && driver->cbSize != sizeof(SP_DRVINFO_DATA_V1_W))) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    const auto list = target.Member->Lists.find(type);
    if (list == target.Member->Lists.end()) {
        Misuse(call.Inside(), "a driver list that was not built");
        return call.Fail(FALSE, ERROR_NO_MORE_ITEMS);
    }
    if (index >= list->second.Entries.size()) {
        return call.Fail(FALSE, ERROR_NO_MORE_ITEMS);
    }
    driver->DriverType = type;
    driver->Reserved = index + 1;
    CopyText(list->second.Entries[index].Description, driver->Description, LINE_LEN);
    CopyText(L"Test maker", driver->MfgName, LINE_LEN);
    CopyText(L"Test maker", driver->ProviderName, LINE_LEN);
    if (second) {
        driver->DriverDate = {};
        driver->DriverVersion = 1;
    }
    return TRUE;
}

// The entry that a driver record from the enumeration stands for, or null.
const DriverEntry* EntryOf(const SetMember& member, const SP_DRVINFO_DATA_V2_W* driver) {
    if (driver == nullptr || (driver->cbSize != sizeof(SP_DRVINFO_DATA_V2_W) &&
                              driver->cbSize != sizeof(SP_DRVINFO_DATA_V1_W))) {
        return nullptr;
    }
    const auto list = member.Lists.find(driver->DriverType);
    if (list == member.Lists.end() || driver->Reserved == 0 ||
        driver->Reserved > list->second.Entries.size()) {
        return nullptr;
    }
    return &list->second.Entries[driver->Reserved - 1];
}

BOOL WINAPI HookSetupDiGetDriverInfoDetailW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                            PSP_DRVINFO_DATA_V2_W driver,
                                            PSP_DRVINFO_DETAIL_DATA_W detail, DWORD size,
                                            PDWORD needed) {
    Call call("SetupDiGetDriverInfoDetailW", Counting::Always,
              {DeviceName(handle, data), Buffer(detail), size});
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    const DriverEntry* entry = EntryOf(*target.Member, driver);
    if (entry == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    constexpr std::size_t head = offsetof(SP_DRVINFO_DETAIL_DATA_W, HardwareID);
    // The ID and the empty text that ends the list.
    const std::size_t ids = (entry->HardwareId.size() + 2) * sizeof(wchar_t);
    const std::size_t total = std::max(head + ids, sizeof(SP_DRVINFO_DETAIL_DATA_W));
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(total);
    }
    if (detail == nullptr && size == 0) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    if (detail == nullptr || size < sizeof(SP_DRVINFO_DETAIL_DATA_W) ||
        detail->cbSize != sizeof(SP_DRVINFO_DETAIL_DATA_W)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    if (size < total) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memset(reinterpret_cast<unsigned char*>(detail) + sizeof(DWORD), 0, total - sizeof(DWORD));
    CopyText(entry->InfPath, detail->InfFileName, MAX_PATH);
    CopyText(L"Install", detail->SectionName, LINE_LEN);
    CopyText(entry->Description, detail->DrvDescription, LINE_LEN);
    std::memcpy(reinterpret_cast<unsigned char*>(detail) + head, entry->HardwareId.c_str(),
                (entry->HardwareId.size() + 1) * sizeof(wchar_t));
    return TRUE;
}

BOOL WINAPI HookSetupDiSetSelectedDevice(HDEVINFO handle, PSP_DEVINFO_DATA data) {
    Call call("SetupDiSetSelectedDevice", Counting::Always, {DeviceName(handle, data)});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
    }
    set->Selected = member;
    return TRUE;
}

BOOL WINAPI HookSetupDiSetSelectedDriverW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                          PSP_DRVINFO_DATA_V2_W driver) {
    Call call("SetupDiSetSelectedDriverW", Counting::Always, {DeviceName(handle, data)});
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    if (driver == nullptr) {
        target.Member->SelectedDriver.reset();
        return TRUE;
    }
    const DriverEntry* entry = EntryOf(*target.Member, driver);
    if (entry == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    target.Member->SelectedDriver = *entry;
    return TRUE;
}

BOOL WINAPI HookSetupDiGetDeviceInstallParamsW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                               PSP_DEVINSTALL_PARAMS_W params) {
    Call call("SetupDiGetDeviceInstallParamsW", Counting::Always, {DeviceName(handle, data)});
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    if (params == nullptr || params->cbSize != sizeof(SP_DEVINSTALL_PARAMS_W)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    *params = target.Member->Install;
    return TRUE;
}

BOOL WINAPI HookSetupDiSetDeviceInstallParamsW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                               PSP_DEVINSTALL_PARAMS_W params) {
    Call call("SetupDiSetDeviceInstallParamsW", Counting::Always,
              {DeviceName(handle, data), Hex(params == nullptr ? 0 : params->Flags),
               Hex(params == nullptr ? 0 : params->FlagsEx),
               params == nullptr ? nullptr : params->DriverPath});
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    if (params == nullptr || params->cbSize != sizeof(SP_DEVINSTALL_PARAMS_W)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    target.Member->Install = *params;
    return TRUE;
}

// Whether the parameters are complete and sensible for their own function.
bool ValidClassInstall(const SP_CLASSINSTALL_HEADER* header, DWORD size) {
    if (header->InstallFunction == DIF_REMOVE) {
        const auto* params = reinterpret_cast<const SP_REMOVEDEVICE_PARAMS*>(header);
        return size >= sizeof(*params) && (params->Scope == DI_REMOVEDEVICE_GLOBAL ||
                                           params->Scope == DI_REMOVEDEVICE_CONFIGSPECIFIC);
    }
    if (header->InstallFunction == DIF_PROPERTYCHANGE) {
        const auto* params = reinterpret_cast<const SP_PROPCHANGE_PARAMS*>(header);
        return size >= sizeof(*params) && params->StateChange >= DICS_ENABLE &&
               params->StateChange <= DICS_STOP &&
               (params->Scope == DICS_FLAG_GLOBAL || params->Scope == DICS_FLAG_CONFIGSPECIFIC);
    }
    return true;
}

BOOL WINAPI HookSetupDiSetClassInstallParamsW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                              PSP_CLASSINSTALL_HEADER header, DWORD size) {
    Call call(
        "SetupDiSetClassInstallParamsW", Counting::Always,
        {DeviceName(handle, data), Hex(header == nullptr ? 0 : header->InstallFunction), size});
    const Target target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    if (header == nullptr) {
        target.Member->ClassInstall.clear();
        return size == 0 ? TRUE : call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (size < sizeof(SP_CLASSINSTALL_HEADER) || header->cbSize != sizeof(SP_CLASSINSTALL_HEADER)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    if (!ValidClassInstall(header, size)) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(header);
    target.Member->ClassInstall.assign(bytes, bytes + size);
    return TRUE;
}

BOOL Remove(Call& call, SetMember& member) {
    Device& device = member.Owner->Description;
    if (device.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    device.Removed = true;
    member.Install.Flags |= device.FlagsAfterRemoval;
    return TRUE;
}

BOOL ChangeState(Call& call, SetMember& member) {
    SP_PROPCHANGE_PARAMS params{};
    if (member.ClassInstall.size() >= sizeof(params)) {
        std::memcpy(&params, member.ClassInstall.data(), sizeof(params));
    }
    if (params.ClassInstallHeader.InstallFunction != DIF_PROPERTYCHANGE) {
        return call.Fail(FALSE, ERROR_NO_CLASSINSTALL_PARAMS);
    }
    if (member.Owner->Description.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    member.Owner->Description.StateChanges.push_back(params.StateChange);
    return TRUE;
}

BOOL WINAPI HookSetupDiCallClassInstaller(DI_FUNCTION function, HDEVINFO handle,
                                          PSP_DEVINFO_DATA data) {
    Call call("SetupDiCallClassInstaller", Counting::Always,
              {Hex(function), DeviceName(handle, data)});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
    }
    if (function == DIF_REMOVE) {
        return Remove(call, *member);
    }
    if (function == DIF_PROPERTYCHANGE) {
        return ChangeState(call, *member);
    }
    return call.Fail(FALSE, ERROR_DI_DO_DEFAULT);
}

} // namespace

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupDiBuildDriverInfoList, HookSetupDiBuildDriverInfoList);
MACHINE_HOOK(SetupDiDestroyDriverInfoList, HookSetupDiDestroyDriverInfoList);
MACHINE_HOOK(SetupDiEnumDriverInfoW, HookSetupDiEnumDriverInfoW);
MACHINE_HOOK(SetupDiGetDriverInfoDetailW, HookSetupDiGetDriverInfoDetailW);
MACHINE_HOOK(SetupDiSetSelectedDevice, HookSetupDiSetSelectedDevice);
MACHINE_HOOK(SetupDiSetSelectedDriverW, HookSetupDiSetSelectedDriverW);
MACHINE_HOOK(SetupDiGetDeviceInstallParamsW, HookSetupDiGetDeviceInstallParamsW);
MACHINE_HOOK(SetupDiSetDeviceInstallParamsW, HookSetupDiSetDeviceInstallParamsW);
MACHINE_HOOK(SetupDiSetClassInstallParamsW, HookSetupDiSetClassInstallParamsW);
MACHINE_HOOK(SetupDiCallClassInstaller, HookSetupDiCallClassInstaller);
