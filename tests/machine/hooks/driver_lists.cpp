// Driver lists of devices and their entries.
#include "machine/files/disk.h"
#include "machine/hooks/device_sets.h"
#include "machine/inf_text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace machine {

namespace {

static_assert(sizeof(SP_DRVINFO_DATA_V2_W) == 1568);
static_assert(sizeof(SP_DRVINFO_DETAIL_DATA_W) == 1584);

// The INFs that the install parameters name: one, those of a folder, or those of Windows. Nothing
// with the call's error when the one cannot be read.
std::optional<WideTexts> InfsToSearch(Call& call, const SetMember& member) {
    const State& state = call.Inside();
    const std::wstring path = member.Install.DriverPath;
    if ((member.Install.Flags & DI_ENUMSINGLEINF) != 0) {
        if (!Exists(state, path)) {
            return call.Fail(std::nullopt, ERROR_FILE_NOT_FOUND);
        }
        if (!ReadInf(state, path)) {
            return call.Fail(std::nullopt, ERROR_GENERAL_SYNTAX);
        }
        return WideTexts{path};
    }
    return InfsIn(state, (path.empty() ? state.WindowsFolder + L"\\INF" : path) + L"\\");
}

void LeaveOneClass(const State& state, const std::wstring& className, DriverList& list) {
    std::erase_if(list, [&](const DriverEntry& driver) {
        const std::optional<InfContents> inf = ReadInf(state, driver.InfPath);
        return inf && !SameText(inf->Class, className);
    });
}

DriverList CompatibleDrivers(const State& state, const SetMember& member, const WideTexts& infs) {
    const Device& device = member.Owner->Description;
    if (device.Drivers && (member.Install.Flags & DI_ENUMSINGLEINF) == 0) {
        DriverList list = *device.Drivers;
        for (DriverEntry& driver : list) {
            if (driver.HardwareId.empty() && !device.HardwareIds.empty()) {
                driver.HardwareId = device.HardwareIds.front();
            }
        }
        return list;
    }
    DriverList list = FittingDrivers(state, device, infs);
    if (state.Windows.CompatibleListsOfOneClass && device.Class) {
        LeaveOneClass(state, *device.Class, list);
    }
    return list;
}

DriverList ClassDrivers(const State& state, const SetMember& member, const WideTexts& infs) {
    const bool hasClass = member.Owner != nullptr && member.Owner->Description.Class;
    return DriversOfClass(state, hasClass ? *member.Owner->Description.Class : L"", infs,
                          (member.Install.FlagsEx & DI_FLAGSEX_ALLOWEXCLUDEDDRVS) != 0);
}

BOOL WINAPI HookSetupDiBuildDriverInfoList(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD type) {
    Call call("SetupDiBuildDriverInfoList", Counting::Always, {DeviceName(handle, data), type});
    const SetTarget target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    const bool compatible = type == SPDIT_COMPATDRIVER;
    if ((!compatible && type != SPDIT_CLASSDRIVER) || (compatible && data == nullptr)) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (data != nullptr && target.Member->Owner->Description.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    const std::optional<WideTexts> infs = InfsToSearch(call, *target.Member);
    if (!infs) {
        return FALSE;
    }
    const auto build = compatible ? &CompatibleDrivers : &ClassDrivers;
    target.Member->Lists[type] = build(call.Inside(), *target.Member, *infs);
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiDestroyDriverInfoList(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD type) {
    Call call("SetupDiDestroyDriverInfoList", Counting::Never, {DeviceName(handle, data), type},
              Telling::Aside);
    const SetTarget target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return call.Fails() ? TRUE : FALSE;
    }
    target.Member->Lists.erase(type);
    return call.Succeed(TRUE);
}

void CopyText(std::wstring_view text, WCHAR* buffer, std::size_t capacity) {
    const std::size_t length = std::min(text.size(), capacity - 1);
    std::copy_n(text.data(), length, buffer);
    buffer[length] = L'\0';
}

BOOL WINAPI HookSetupDiEnumDriverInfoW(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD type,
                                       DWORD index, PSP_DRVINFO_DATA_V2_W driver) {
    Call call("SetupDiEnumDriverInfoW", Counting::Always, {DeviceName(handle, data), type, index});
    const SetTarget target = TargetOf(call, handle, data);
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
    if (index >= list->second.size()) {
        return call.Fail(FALSE, ERROR_NO_MORE_ITEMS);
    }
    const DriverEntry& entry = list->second[index];
    driver->DriverType = type;
    driver->Reserved = index + 1;
    CopyText(entry.Description, driver->Description, LINE_LEN);
    CopyText(entry.Manufacturer, driver->MfgName, LINE_LEN);
    CopyText(entry.Provider, driver->ProviderName, LINE_LEN);
    if (second) {
        driver->DriverDate = {};
        driver->DriverVersion = 1;
    }
    return call.Succeed(TRUE);
}

// The line's IDs, each with its zero, and the zero that ends the list.
std::wstring IdList(const DriverEntry& entry) {
    std::wstring list = entry.HardwareId + L'\0';
    for (const std::wstring& id : entry.CompatibleIds) {
        list += id + L'\0';
    }
    return list + L'\0';
}

void FillRecord(const DriverEntry& entry, const std::wstring& ids,
                SP_DRVINFO_DETAIL_DATA_W& detail) {
    detail.InfDate = entry.InfTime;
    detail.CompatIDsOffset =
        entry.CompatibleIds.empty() ? 0 : static_cast<DWORD>(entry.HardwareId.size() + 1);
    detail.CompatIDsLength =
        entry.CompatibleIds.empty() ? 0 : static_cast<DWORD>(ids.size()) - detail.CompatIDsOffset;
    detail.Reserved = 0;
    CopyText(entry.InfPath, detail.InfFileName, MAX_PATH);
    CopyText(entry.Section, detail.SectionName, LINE_LEN);
    CopyText(entry.Description, detail.DrvDescription, LINE_LEN);
    detail.HardwareID[0] = L'\0';
}

// What a question for the size alone answers.
BOOL AnswerSizeQuery(Call& call) {
    switch (call.Inside().Windows.DriverDetail) {
    case Variants::SizeQuery::TooSmall:
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    case Variants::SizeQuery::BadBuffer:
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    case Variants::SizeQuery::Succeeds:
        break;
    }
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiGetDriverInfoDetailW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                            PSP_DRVINFO_DATA_V2_W driver,
                                            PSP_DRVINFO_DETAIL_DATA_W detail, DWORD size,
                                            PDWORD needed) {
    Call call("SetupDiGetDriverInfoDetailW", Counting::Always,
              {DeviceName(handle, data), Buffer(detail), size});
    const SetTarget target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    const DriverEntry* entry = EntryOf(*target.Member, driver);
    if (entry == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    const bool sound = detail == nullptr
                           ? size == 0
                           : size >= sizeof(*detail) && detail->cbSize == sizeof(*detail);
    if (!sound) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    const std::wstring ids = IdList(*entry);
    constexpr std::size_t Head = offsetof(SP_DRVINFO_DETAIL_DATA_W, HardwareID);
    const std::size_t total = Head + ids.size() * sizeof(wchar_t);
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(total);
    }
    if (detail == nullptr) {
        return AnswerSizeQuery(call);
    }
    FillRecord(*entry, ids, *detail);
    if (size < total) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(reinterpret_cast<unsigned char*>(detail) + Head, ids.data(),
                ids.size() * sizeof(wchar_t));
    return call.Succeed(TRUE);
}

} // namespace

const DriverEntry* EntryOf(const SetMember& member, const SP_DRVINFO_DATA_V2_W* driver) {
    if (driver == nullptr || (driver->cbSize != sizeof(SP_DRVINFO_DATA_V2_W) &&
                              driver->cbSize != sizeof(SP_DRVINFO_DATA_V1_W))) {
        return nullptr;
    }
    const auto list = member.Lists.find(driver->DriverType);
    if (list == member.Lists.end() || driver->Reserved == 0 ||
        driver->Reserved > list->second.size()) {
        return nullptr;
    }
    return &list->second[driver->Reserved - 1];
}

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupDiBuildDriverInfoList, HookSetupDiBuildDriverInfoList);
MACHINE_HOOK(SetupDiDestroyDriverInfoList, HookSetupDiDestroyDriverInfoList);
MACHINE_HOOK(SetupDiEnumDriverInfoW, HookSetupDiEnumDriverInfoW);
MACHINE_HOOK(SetupDiGetDriverInfoDetailW, HookSetupDiGetDriverInfoDetailW);
