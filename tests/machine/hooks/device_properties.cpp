// Registry properties of devices.
#include "machine/hooks/device_sets.h"

#include <cstring>

namespace machine {

namespace {

struct Property {
    DWORD Type;
    std::string Data;
};

std::string Bytes(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

std::optional<Property> TextProperty(const std::wstring& text) {
    return text.empty() ? std::nullopt : std::optional(Property{REG_SZ, Bytes(text + L'\0')});
}

std::optional<Property> ListProperty(const WideTexts& texts) {
    std::wstring all;
    for (const std::wstring& text : texts) {
        all += text + L'\0';
    }
    return Property{REG_MULTI_SZ, Bytes(all + L'\0')};
}

std::optional<Property> NumberProperty(DWORD number) {
    return Property{REG_DWORD, {reinterpret_cast<const char*>(&number), sizeof(number)}};
}

std::optional<Property> PropertyOf(const Device& device, DWORD property) {
    switch (property) {
    case SPDRP_HARDWAREID:
        return device.HasHardwareIds ? ListProperty(device.HardwareIds) : std::nullopt;
    case SPDRP_COMPATIBLEIDS:
        return device.CompatibleIds.empty() ? std::nullopt : ListProperty(device.CompatibleIds);
    case SPDRP_CLASS:
        return device.Class ? std::optional(Property{REG_SZ, Bytes(*device.Class + L'\0')})
                            : std::nullopt;
    case SPDRP_CLASSGUID:
        return device.Class ? TextProperty(GuidText(ClassGuidOf(device))) : std::nullopt;
    case SPDRP_CONFIGFLAGS:
        return device.ConfigFlags ? NumberProperty(*device.ConfigFlags) : std::nullopt;
    case SPDRP_DRIVER:
        return TextProperty(device.Driver);
    case SPDRP_FRIENDLYNAME:
        return TextProperty(device.FriendlyName);
    default:
        return std::nullopt;
    }
}

// The device behind an element that has not been removed; null with the call's error.
Device* LivingDevice(Call& call, HDEVINFO handle, const SP_DEVINFO_DATA* data) {
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    const SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return nullptr;
    }
    Device& device = member->Owner->Description;
    return device.Removed ? call.Fail<Device*>(nullptr, ERROR_NO_SUCH_DEVINST) : &device;
}

BOOL WINAPI HookSetupDiGetDeviceRegistryPropertyW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                                  DWORD property, PDWORD type, PBYTE buffer,
                                                  DWORD size, PDWORD needed) {
    Call call("SetupDiGetDeviceRegistryPropertyW", Counting::Always,
              {DeviceName(handle, data), property, size});
    const Device* device = LivingDevice(call, handle, data);
    if (device == nullptr) {
        return FALSE;
    }
    if (property >= SPDRP_MAXIMUM_PROPERTY) {
        return call.Fail(FALSE, ERROR_INVALID_REG_PROPERTY);
    }
    const std::optional<Property> value = PropertyOf(*device, property);
    if (!value) {
        return call.Fail(FALSE, ERROR_INVALID_DATA);
    }
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(value->Data.size());
    }
    if (type != nullptr) {
        *type = value->Type;
    }
    if (buffer == nullptr || size < value->Data.size()) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(buffer, value->Data.data(), value->Data.size());
    return call.Succeed(TRUE);
}

BOOL SetFlags(Call& call, Device& device, const BYTE* buffer, DWORD size) {
    DWORD flags = 0;
    if (buffer == nullptr || size != sizeof(flags)) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    std::memcpy(&flags, buffer, sizeof(flags));
    device.ConfigFlags = flags;
    return call.Succeed(TRUE);
}

// An empty value takes the name away.
BOOL SetName(Call& call, Device& device, const BYTE* buffer, DWORD size) {
    std::wstring name(size / sizeof(wchar_t), L'\0');
    if (buffer != nullptr) {
        std::memcpy(name.data(), buffer, name.size() * sizeof(wchar_t));
    }
    name = name.c_str();
    if (name.empty() && device.FriendlyName.empty()) {
        return call.Fail(FALSE, ERROR_INVALID_DATA);
    }
    device.FriendlyName = name;
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiSetDeviceRegistryPropertyW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                                  DWORD property, const BYTE* buffer, DWORD size) {
    DWORD flags = 0;
    if (buffer != nullptr && size >= sizeof(flags)) {
        std::memcpy(&flags, buffer, sizeof(flags));
    }
    Call call("SetupDiSetDeviceRegistryPropertyW", Counting::Always,
              {DeviceName(handle, data), property, Hex(flags), size});
    Device* device = LivingDevice(call, handle, data);
    if (device == nullptr) {
        return FALSE;
    }
    if (property == SPDRP_CONFIGFLAGS) {
        return SetFlags(call, *device, buffer, size);
    }
    return property == SPDRP_FRIENDLYNAME ? SetName(call, *device, buffer, size)
                                          : call.Fail(FALSE, ERROR_INVALID_REG_PROPERTY);
}

} // namespace

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupDiGetDeviceRegistryPropertyW, HookSetupDiGetDeviceRegistryPropertyW);
MACHINE_HOOK(SetupDiSetDeviceRegistryPropertyW, HookSetupDiSetDeviceRegistryPropertyW);
