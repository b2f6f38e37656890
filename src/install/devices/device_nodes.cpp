#include "install/devices/device_nodes.h"

#include "common/limits.h"
#include "platform/sized_read.h"

#include <array>

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
    SizedBlock block;
    const auto query = [&](void* bytes, DWORD size, DWORD* needed) {
        const BOOL done = SetupDiGetDeviceRegistryPropertyW(
            set, &device, SPDRP_HARDWAREID, nullptr, static_cast<BYTE*>(bytes), size, needed);
        // Room for twice as much: a list that grows between the two calls still fits.
        *needed *= 2;
        return done;
    };
    if (ReadSized(block, sizeof(wchar_t), query) != SizedRead::Done) {
        return std::nullopt;
    }
    return block.As<wchar_t>();
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
