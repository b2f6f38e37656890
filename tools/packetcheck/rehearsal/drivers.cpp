// Driver lists, class installers, and the installation of drivers.
#include "rehearsal/device_set.h"
#include "rehearsal/imports.h"
#include "rehearsal/library_functions.h"

#include "inf/models.h"

#include <algorithm>

namespace rehearsal {

namespace {

// The class list is asked for in one case only: the INF with the generic composite driver.
constexpr const wchar_t* CompositeInf = L"C:\\Windows\\INF\\USB.INF";
constexpr const wchar_t* CompositeId = L"USB\\COMPOSITE";

bool Serves(const std::wstring& inf, const std::wstring& id) {
    DeviceIdList ids;
    return GetDeviceIDFromInf(inf, ids) && ListHolds(ids, id);
}

BOOL WINAPI BuildDriverList(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD type) {
    DeviceSet& set = SetOf(handle);
    const StageDevice* const device = DeviceOf(handle, data);
    if (device == nullptr) {
        return FailWith(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    set.Drivers.clear();
    if (type == SPDIT_CLASSDRIVER) {
        set.Drivers.emplace_back(CompositeInf, CompositeId);
        return TRUE;
    }
    for (const StoreEntry& entry : Stage::Current()->Store) {
        const std::wstring inf = StoreFolder + entry.Name;
        if (!entry.Source.empty() && Serves(inf, device->Id)) {
            set.Drivers.emplace_back(inf, device->Id);
        }
    }
    return TRUE;
}

BOOL WINAPI EnumDriver(HDEVINFO handle, PSP_DEVINFO_DATA /*data*/, DWORD /*type*/, DWORD index,
                       PSP_DRVINFO_DATA_V2_W driver) {
    if (index >= SetOf(handle).Drivers.size()) {
        return FailWith(FALSE, ERROR_NO_MORE_ITEMS);
    }
    driver->Reserved = index;
    return TRUE;
}

BOOL WINAPI DriverDetail(HDEVINFO handle, PSP_DEVINFO_DATA /*data*/, PSP_DRVINFO_DATA_V2_W driver,
                         PSP_DRVINFO_DETAIL_DATA_W detail, DWORD size, PDWORD needed) {
    if (needed != nullptr) {
        *needed = sizeof(*detail) + MAX_PATH * sizeof(wchar_t);
    }
    if (detail == nullptr || size < sizeof(*detail)) {
        return FailWith(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    const auto& [inf, id] = SetOf(handle).Drivers.at(driver->Reserved);
    detail->InfFileName[inf.copy(detail->InfFileName, MAX_PATH - 1)] = L'\0';
    const std::size_t room =
        (size - offsetof(SP_DRVINFO_DETAIL_DATA_W, HardwareID)) / sizeof(wchar_t);
    detail->HardwareID[id.copy(detail->HardwareID, room - 1)] = L'\0';
    return TRUE;
}

BOOL WINAPI DestroyDriverList(HDEVINFO handle, PSP_DEVINFO_DATA /*data*/, DWORD /*type*/) {
    SetOf(handle).Drivers.clear();
    return TRUE;
}

BOOL WINAPI SetClassInstallParams(HDEVINFO /*handle*/, PSP_DEVINFO_DATA /*data*/,
                                  PSP_CLASSINSTALL_HEADER /*parameters*/, DWORD /*size*/) {
    return TRUE;
}

// The device goes, and is back without class and driver when the tree is next refreshed.
BOOL WINAPI CallClassInstaller(DI_FUNCTION function, HDEVINFO handle, PSP_DEVINFO_DATA data) {
    StageDevice* const device = DeviceOf(handle, data);
    if (device == nullptr) {
        return FailWith(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    if (function == DIF_REMOVE) {
        if (!device->Present) {
            return FailWith(FALSE, ERROR_NO_SUCH_DEVINST);
        }
        Stage::Current()->Write({.What = Deed::DeviceRemoved, .Subject = device->InstanceId()});
        device->Present = false;
        device->ClassName.clear();
    }
    return TRUE;
}

BOOL WINAPI GetInstallParams(HDEVINFO /*handle*/, PSP_DEVINFO_DATA /*data*/,
                             PSP_DEVINSTALL_PARAMS_W parameters) {
    *parameters = {};
    parameters->cbSize = sizeof(*parameters);
    return TRUE;
}

BOOL WINAPI SetInstallParams(HDEVINFO /*handle*/, PSP_DEVINFO_DATA /*data*/,
                             PSP_DEVINSTALL_PARAMS_W /*parameters*/) {
    return TRUE;
}

// What is done with a device that was selected is the installation of the composite driver.
BOOL WINAPI SelectDevice(HDEVINFO handle, PSP_DEVINFO_DATA data) {
    StageDevice* const device = DeviceOf(handle, data);
    if (device != nullptr) {
        Stage::Current()->Write({.What = Deed::GenericDriverChosen, .Subject = device->Id});
        device->ClassName = L"USB";
    }
    return TRUE;
}

BOOL WINAPI SelectDriver(HDEVINFO /*handle*/, PSP_DEVINFO_DATA /*data*/,
                         PSP_DRVINFO_DATA_V2_W /*driver*/) {
    return TRUE;
}

std::wstring ClassIn(const wchar_t* inf) {
    InfLineList lines;
    GetInfSectionTextByKey(inf, L"Version", L"Class", lines);
    return lines.empty() || lines.front().Fields.size() < 2 ? std::wstring()
                                                            : lines.front().Fields[1];
}

BOOL WINAPI UpdateDrivers(HWND /*parent*/, LPCWSTR id, LPCWSTR inf, DWORD /*flags*/, PBOOL reboot) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FailWith(FALSE, ERROR_ACCESS_DENIED);
    }
    const auto device = std::find_if(
        stage->Devices.begin(), stage->Devices.end(),
        [id](const StageDevice& candidate) { return EqualIgnoringCase(candidate.Id, id); });
    if (device == stage->Devices.end() || !device->Present) {
        return FailWith(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    stage->Write({.What = Deed::DriverInstalled, .Subject = id, .Object = inf});
    device->ClassName = ClassIn(inf);
    *reboot = FALSE;
    return TRUE;
}

BOOL WINAPI InstallSelected(HWND /*parent*/, HDEVINFO /*set*/, LPCWSTR /*reserved*/,
                            BOOL /*backup*/, PDWORD reboot) {
    *reboot = 0;
    return TRUE;
}

BOOL WINAPI UninstallInf(PCWSTR name, DWORD /*flags*/, PVOID /*reserved*/) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FailWith(FALSE, ERROR_ACCESS_DENIED);
    }
    const auto gone =
        std::remove_if(stage->Store.begin(), stage->Store.end(), [name](const StoreEntry& entry) {
            return EqualIgnoringCase(entry.Name, name);
        });
    if (gone == stage->Store.end()) {
        return FailWith(FALSE, ERROR_FILE_NOT_FOUND);
    }
    stage->Store.erase(gone, stage->Store.end());
    stage->Write({.What = Deed::InfUninstalled, .Subject = name});
    return TRUE;
}

// Windows keeps one copy of an INF, under one name.
std::optional<std::wstring> NameInStore(const Stage& stage, const std::wstring& source) {
    for (const StoreEntry& entry : stage.Store) {
        if (!entry.Source.empty() && EqualIgnoringCase(entry.Source, source)) {
            return entry.Name;
        }
    }
    return std::nullopt;
}

std::wstring FreeName(const Stage& stage) {
    for (int number = 0;; ++number) {
        const std::wstring name = L"oem" + std::to_wstring(number) + L".inf";
        if (std::none_of(stage.Store.begin(), stage.Store.end(), [&name](const auto& entry) {
                return EqualIgnoringCase(entry.Name, name);
            })) {
            return name;
        }
    }
}

BOOL WINAPI CopyToStore(PCWSTR inf, PCWSTR /*location*/, DWORD /*type*/, DWORD /*style*/,
                        PWSTR destination, DWORD size, PDWORD /*needed*/, PWSTR* /*name*/) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FailWith(FALSE, ERROR_ACCESS_DENIED);
    }
    const std::wstring source = stage->RealPath(inf);
    const std::optional<std::wstring> known = NameInStore(*stage, source);
    const std::wstring name = known ? *known : FreeName(*stage);
    const std::wstring path = StoreFolder + name;
    if (!known) {
        stage->Store.push_back({name, source});
    }
    stage->Write({.What = Deed::InfStaged, .Subject = inf, .Object = path});
    destination[path.copy(destination, size - 1)] = L'\0';
    return TRUE;
}

} // namespace

FARPROC InstallFunction(std::string_view name) {
    if (name == "UpdateDriverForPlugAndPlayDevicesW") {
        return AddressOf(&UpdateDrivers);
    }
    if (name == "InstallSelectedDriver") {
        return AddressOf(&InstallSelected);
    }
    return name == "SetupUninstallOEMInfW" ? AddressOf(&UninstallInf) : nullptr;
}

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(SetupDiBuildDriverInfoList, BuildDriverList);
REHEARSED(SetupDiEnumDriverInfoW, EnumDriver);
REHEARSED(SetupDiGetDriverInfoDetailW, DriverDetail);
REHEARSED(SetupDiDestroyDriverInfoList, DestroyDriverList);
REHEARSED(SetupDiSetClassInstallParamsW, SetClassInstallParams);
REHEARSED(SetupDiCallClassInstaller, CallClassInstaller);
REHEARSED(SetupDiGetDeviceInstallParamsW, GetInstallParams);
REHEARSED(SetupDiSetDeviceInstallParamsW, SetInstallParams);
REHEARSED(SetupDiSetSelectedDevice, SelectDevice);
REHEARSED(SetupDiSetSelectedDriverW, SelectDriver);
REHEARSED(SetupUninstallOEMInfW, UninstallInf);
REHEARSED(SetupCopyOEMInfW, CopyToStore);
