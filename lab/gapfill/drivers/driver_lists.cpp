// Lists of drivers that fit a device or belong to a class.
#include "drivers/driver_lists.h"

#include "drivers/inf_file.h"
#include "journal.h"
#include "originals.h"
#include "replacements.h"
#include "wine_version.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <map>
#include <set>

namespace {

using Key = std::pair<HDEVINFO, DWORD>;
std::map<Key, std::vector<ClassDriver>> Lists;
// Lists of compatible drivers, which Wine keeps.
std::set<Key> Destroyed;

Key KeyOf(HDEVINFO set, const SP_DEVINFO_DATA* device) {
    return {set, device == nullptr ? ~DWORD{0} : device->DevInst};
}

template <std::size_t Size>
void CopyText(wchar_t (&to)[Size], const std::wstring& text) {
    const std::size_t length = std::min(text.size(), Size - 1);
    std::wmemcpy(to, text.data(), length);
    to[length] = L'\0';
}

// Of the device, as a text in braces; empty when it has none.
std::wstring ClassOf(HDEVINFO set, PSP_DEVINFO_DATA device) {
    wchar_t guid[64] = {};
    const bool read = device != nullptr &&
                      SETUPAPI(SetupDiGetDeviceRegistryPropertyW)(
                          set, device, SPDRP_CLASSGUID, nullptr, reinterpret_cast<BYTE*>(guid),
                          sizeof(guid) - sizeof(wchar_t), nullptr) != FALSE;
    return read ? guid : L"";
}

// An INF of another class has none.
std::vector<ClassDriver> DriversIn(const std::wstring& infPath, const std::wstring& classGuid) {
    std::vector<ClassDriver> drivers;
    const InfFile inf(infPath);
    if (!inf.IsOpen() ||
        _wcsicmp(inf.Value(L"Version", L"ClassGuid").c_str(), classGuid.c_str()) != 0) {
        return drivers;
    }
    const std::wstring provider = inf.Value(L"Version", L"Provider");
    for (const Model& model : ModelsOf(inf)) {
        drivers.push_back({infPath, provider, model.Manufacturer, model.Description,
                           model.InstallSection, model.HardwareId});
    }
    return drivers;
}

// `Reserved` is the system's to use; here it holds the place in the list, counted from one.
void FillEntry(const ClassDriver& driver, DWORD index, PSP_DRVINFO_DATA_W entry) {
    entry->DriverType = SPDIT_CLASSDRIVER;
    entry->Reserved = index + 1;
    CopyText(entry->Description, driver.Description);
    CopyText(entry->MfgName, driver.Manufacturer);
    CopyText(entry->ProviderName, driver.Provider);
}

// The two zeros behind the hardware id end it and the empty list of compatible ids.
DWORD DetailSize(const ClassDriver& driver) {
    return static_cast<DWORD>(offsetof(SP_DRVINFO_DETAIL_DATA_W, HardwareID) +
                              (driver.HardwareId.size() + 2) * sizeof(wchar_t));
}

BOOL FillDetail(const ClassDriver& driver, PSP_DRVINFO_DETAIL_DATA_W detail, DWORD size,
                PDWORD needed) {
    const DWORD wanted = std::max<DWORD>(DetailSize(driver), sizeof(*detail));
    if (needed != nullptr) {
        *needed = wanted;
    }
    if (detail == nullptr || size < wanted) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (detail->cbSize != sizeof(*detail)) {
        return Fail(ERROR_INVALID_USER_BUFFER);
    }
    detail->InfDate = {};
    detail->CompatIDsOffset = 0;
    detail->CompatIDsLength = 0;
    CopyText(detail->SectionName, driver.InstallSection);
    CopyText(detail->InfFileName, driver.InfPath);
    CopyText(detail->DrvDescription, driver.Description);
    std::wmemcpy(detail->HardwareID, driver.HardwareId.c_str(), driver.HardwareId.size() + 1);
    return TRUE;
}

} // namespace

const ClassDriver* FindClassDriver(HDEVINFO set, const SP_DEVINFO_DATA* device,
                                   const SP_DRVINFO_DATA_W* entry) {
    const auto list = Lists.find(KeyOf(set, device));
    if (entry == nullptr || entry->DriverType != SPDIT_CLASSDRIVER || list == Lists.end() ||
        entry->Reserved == 0 || entry->Reserved > list->second.size()) {
        return nullptr;
    }
    return &list->second[entry->Reserved - 1];
}

void ForgetDriverLists(HDEVINFO set) {
    std::erase_if(Lists, [set](const auto& entry) { return entry.first.first == set; });
    std::erase_if(Destroyed, [set](const Key& key) { return key.first == set; });
}

// Windows: a class driver list holds every driver of the device's class, or with DI_ENUMSINGLEINF
// every one in the INF that DriverPath names. Wine 8: knows lists of compatible drivers only. Of
// the class lists only those of a single INF are filled in.
BOOL WINAPI FilledBuildDriverInfoList(HDEVINFO set, PSP_DEVINFO_DATA device, DWORD type) {
    Enter("SetupDiBuildDriverInfoList", std::to_wstring(type));
    if (type != SPDIT_CLASSDRIVER) {
        Destroyed.erase(KeyOf(set, device));
        return SETUPAPI(SetupDiBuildDriverInfoList)(set, device, type);
    }
    SP_DEVINSTALL_PARAMS_W params = {};
    params.cbSize = sizeof(params);
    if (!SETUPAPI(SetupDiGetDeviceInstallParamsW)(set, device, &params)) {
        return FALSE;
    }
    Lists[KeyOf(set, device)] = DriversIn(params.DriverPath, ClassOf(set, device));
    return Succeed();
}

// The same gap: entries of class driver lists; and none in a list that was destroyed.
BOOL WINAPI FilledEnumDriverInfo(HDEVINFO set, PSP_DEVINFO_DATA device, DWORD type, DWORD index,
                                 PSP_DRVINFO_DATA_W driver) {
    if (type != SPDIT_CLASSDRIVER) {
        return Destroyed.contains(KeyOf(set, device))
                   ? Fail(ERROR_NO_MORE_ITEMS)
                   : SETUPAPI(SetupDiEnumDriverInfoW)(set, device, type, index, driver);
    }
    Enter("SetupDiEnumDriverInfoW", std::to_wstring(index));
    const auto list = Lists.find(KeyOf(set, device));
    if (list == Lists.end() || index >= list->second.size()) {
        return Fail(ERROR_NO_MORE_ITEMS);
    }
    FillEntry(list->second[index], index, driver);
    return Succeed();
}

// Windows: asked for the size, with no buffer, it fails with ERROR_INSUFFICIENT_BUFFER; the path of
// an INF has backslashes only. Wine 8: TRUE; "C:/windows/inf\..." for the folder of Windows.
BOOL WINAPI FilledGetDriverInfoDetail(HDEVINFO set, PSP_DEVINFO_DATA device,
                                      PSP_DRVINFO_DATA_W driver, PSP_DRVINFO_DETAIL_DATA_W detail,
                                      DWORD size, PDWORD needed) {
    Enter("SetupDiGetDriverInfoDetailW", detail == nullptr ? L"size" : L"");
    if (const ClassDriver* const found = FindClassDriver(set, device, driver)) {
        return FillDetail(*found, detail, size, needed);
    }
    const BOOL result =
        SETUPAPI(SetupDiGetDriverInfoDetailW)(set, device, driver, detail, size, needed);
    if (detail != nullptr) {
        if (result) {
            std::replace(detail->InfFileName, detail->InfFileName + MAX_PATH, L'/', L'\\');
        }
        return result;
    }
    if (!result) {
        NoteNoLongerNeeded("SetupDiGetDriverInfoDetailW");
        return FALSE;
    }
    return Fail(ERROR_INSUFFICIENT_BUFFER);
}

// Windows: TRUE. Wine 8: FALSE, always; its lists live as long as their set.
BOOL WINAPI FilledDestroyDriverInfoList(HDEVINFO set, PSP_DEVINFO_DATA device, DWORD type) {
    Enter("SetupDiDestroyDriverInfoList", std::to_wstring(type));
    if (type == SPDIT_CLASSDRIVER) {
        Lists.erase(KeyOf(set, device));
        return Succeed();
    }
    if (SETUPAPI(SetupDiDestroyDriverInfoList)(set, device, type)) {
        NoteNoLongerNeeded("SetupDiDestroyDriverInfoList");
    }
    Destroyed.insert(KeyOf(set, device));
    return Succeed();
}
