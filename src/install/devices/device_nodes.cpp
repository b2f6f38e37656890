#include "install/devices/device_nodes.h"

#include "common/limits.h"

#include <algorithm>
#include <array>
#include <new>

bool EnumerationIsComplete() {
    const DWORD error = GetLastError();
    return error == ERROR_NO_MORE_ITEMS || error == ERROR_SUCCESS;
}

DeviceInfoSetOwner OpenUsbDevices(DWORD flags) {
    return DeviceInfoSetOwner(
        SetupDiGetClassDevsW(nullptr, L"USB", nullptr, DIGCF_ALLCLASSES | flags));
}

std::optional<std::wstring> ReadInstanceId(HDEVINFO set, SP_DEVINFO_DATA& device) {
    std::array<wchar_t, DeviceIdCapacity + 1> id{};
    if (SetupDiGetDeviceInstanceIdW(set, &device, id.data(), static_cast<DWORD>(DeviceIdCapacity),
                                    nullptr) == FALSE) {
        return std::nullopt;
    }
    return id.data();
}

std::optional<std::wstring> ReadFirstHardwareId(HDEVINFO set, SP_DEVINFO_DATA& device) {
    DWORD size = 0;
    if (SetupDiGetDeviceRegistryPropertyW(set, &device, SPDRP_HARDWAREID, nullptr, nullptr, 0,
                                          &size) == FALSE &&
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return std::nullopt;
    }
    // Twice the size: a value that was stored without its terminating zero must not run on.
    std::wstring ids(std::max<std::size_t>(size, sizeof(wchar_t)), L'\0');
    const auto capacity = static_cast<DWORD>(ids.size() * sizeof(wchar_t));
    if (SetupDiGetDeviceRegistryPropertyW(set, &device, SPDRP_HARDWAREID, nullptr,
                                          static_cast<BYTE*>(static_cast<void*>(ids.data())),
                                          capacity, nullptr) == FALSE) {
        return std::nullopt;
    }
    return ids.c_str();
}

std::optional<std::wstring> ReadClassName(HDEVINFO set, SP_DEVINFO_DATA& device) {
    std::array<wchar_t, PathCapacity + 1> name{};
    constexpr DWORD Size = PathCapacity * sizeof(wchar_t);
    if (SetupDiGetDeviceRegistryPropertyW(set, &device, SPDRP_CLASS, nullptr,
                                          static_cast<BYTE*>(static_cast<void*>(name.data())), Size,
                                          nullptr) != FALSE) {
        return name.data();
    }
    if (GetLastError() == ERROR_INVALID_DATA) {
        return std::wstring();
    }
    return std::nullopt;
}

bool MarkForReinstall(HDEVINFO set, SP_DEVINFO_DATA& device) {
    DWORD flags = 0;
    auto* const bytes = static_cast<BYTE*>(static_cast<void*>(&flags));
    if (SetupDiGetDeviceRegistryPropertyW(set, &device, SPDRP_CONFIGFLAGS, nullptr, bytes,
                                          sizeof(flags), nullptr) == FALSE) {
        return false;
    }
    flags |= CONFIGFLAG_REINSTALL;
    return SetupDiSetDeviceRegistryPropertyW(set, &device, SPDRP_CONFIGFLAGS, bytes,
                                             sizeof(flags)) != FALSE;
}

Removal RemoveDevice(HDEVINFO set, SP_DEVINFO_DATA& device) {
    SP_REMOVEDEVICE_PARAMS parameters{};
    parameters.ClassInstallHeader.cbSize = sizeof(parameters.ClassInstallHeader);
    parameters.ClassInstallHeader.InstallFunction = DIF_REMOVE;
    parameters.Scope = DI_REMOVEDEVICE_GLOBAL;
    if (SetupDiSetClassInstallParamsW(set, &device, &parameters.ClassInstallHeader,
                                      sizeof(parameters)) == FALSE) {
        return {RemovalStep::SetParameters, std::nullopt};
    }
    if (SetupDiCallClassInstaller(DIF_REMOVE, set, &device) == FALSE) {
        return {RemovalStep::CallInstaller, std::nullopt};
    }
    SP_DEVINSTALL_PARAMS_W installed{};
    installed.cbSize = sizeof(installed);
    if (SetupDiGetDeviceInstallParamsW(set, &device, &installed) == FALSE) {
        return {RemovalStep::Done, std::nullopt};
    }
    return {RemovalStep::Done, installed.Flags & (DI_NEEDRESTART | DI_NEEDREBOOT)};
}

DetailResult ReadDriverDetail(HDEVINFO set, SP_DEVINFO_DATA& device, SP_DRVINFO_DATA_V2_W& driver,
                              DriverDetail& detail) {
    DWORD size = 0;
    if (SetupDiGetDriverInfoDetailW(set, &device, &driver, nullptr, 0, &size) != FALSE ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return DetailResult::Failed;
    }
    size = std::max<DWORD>(size, sizeof(SP_DRVINFO_DETAIL_DATA_W));
    // Zeroed and one character longer, so that the ID at its end is terminated in any case.
    const std::unique_ptr<std::byte[]> block(new (std::nothrow)
                                                 std::byte[size + sizeof(wchar_t)]());
    if (block == nullptr) {
        return DetailResult::OutOfMemory;
    }
    auto* const data = reinterpret_cast<SP_DRVINFO_DETAIL_DATA_W*>(block.get());
    data->cbSize = sizeof(SP_DRVINFO_DETAIL_DATA_W);
    if (SetupDiGetDriverInfoDetailW(set, &device, &driver, data, size, nullptr) == FALSE) {
        return DetailResult::Failed;
    }
    detail = {data->InfFileName, data->HardwareID};
    return DetailResult::Read;
}
