// Device information sets and what can be read from them.
#include "rehearsal/device_set.h"
#include "rehearsal/imports.h"
#include "rehearsal/scene.h"

#include <algorithm>
#include <cstring>

namespace rehearsal {

namespace {

constexpr unsigned long CdRomInterface = 0x53F56308;

bool IsOf(const StageDevice& device, const wchar_t* enumerator) {
    return enumerator == nullptr ||
           EqualIgnoringCase(device.Id.substr(0, device.Id.find(L'\\')), enumerator);
}

// The drive that the switch order is meant for: the one that Setup.ini has just named.
std::wstring ConfiguredDrive(const Stage& stage) {
    const std::vector<Event>& events = stage.Events();
    const auto drive = std::find_if(events.rbegin(), events.rend(), [](const Event& event) {
        return event.What == Deed::SettingRead && event.Subject == L"SCSIDEVICE";
    });
    return drive == events.rend() ? std::wstring() : drive->Text;
}

void CollectInterfaces(const Stage& stage, const GUID& guid, DeviceSet& set) {
    if (guid.Data1 == CdRomInterface) {
        set.Interfaces.push_back(ConfiguredDrive(stage));
        return;
    }
    for (const StageDevice& device : stage.Devices) {
        if (device.Present && !Contains(UpperCase(device.Id), L"&MI_")) {
            set.Interfaces.push_back(FirstHardwareId(device.Id));
        }
    }
}

// A device that was removed is in no set until it is back.
HDEVINFO WINAPI ClassDevices(const GUID* guid, PCWSTR enumerator, HWND /*parent*/, DWORD flags) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FailWith(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED);
    }
    auto set = std::make_unique<DeviceSet>();
    if ((flags & DIGCF_DEVICEINTERFACE) != 0) {
        CollectInterfaces(*stage, *guid, *set);
        return OpenHandle(std::move(set));
    }
    for (std::size_t index = 0; index < stage->Devices.size(); ++index) {
        const StageDevice& device = stage->Devices[index];
        if (device.Present && IsOf(device, enumerator)) {
            set->Members.push_back(index);
        }
    }
    return OpenHandle(std::move(set));
}

BOOL WINAPI DestroySet(HDEVINFO handle) {
    CloseStageHandle(handle);
    return TRUE;
}

BOOL WINAPI EnumDevice(HDEVINFO handle, DWORD index, PSP_DEVINFO_DATA data) {
    const DeviceSet& set = SetOf(handle);
    if (index >= set.Members.size()) {
        return FailWith(FALSE, ERROR_NO_MORE_ITEMS);
    }
    data->DevInst = static_cast<DWORD>(set.Members[index] + 1);
    data->Reserved = index + 1;
    return TRUE;
}

BOOL WINAPI InstanceId(HDEVINFO handle, PSP_DEVINFO_DATA data, PWSTR buffer, DWORD size,
                       PDWORD /*needed*/) {
    const StageDevice* const device = DeviceOf(handle, data);
    if (device == nullptr || device->InstanceId().size() >= size) {
        return FailWith(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    const std::wstring id = device->InstanceId();
    id.copy(buffer, id.size());
    buffer[id.size()] = L'\0';
    return TRUE;
}

BOOL CopyProperty(const void* bytes, std::size_t count, PBYTE buffer, DWORD size, PDWORD needed) {
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(count);
    }
    if (buffer == nullptr || size < count) {
        return FailWith(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(buffer, bytes, count);
    return TRUE;
}

std::wstring HardwareIdOf(HDEVINFO handle, const SP_DEVINFO_DATA* data) {
    const StageDevice* const device = DeviceOf(handle, data);
    if (device != nullptr) {
        return FirstHardwareId(device->Id);
    }
    const DeviceSet& set = SetOf(handle);
    return set.Interfaces.empty() ? std::wstring() : set.Interfaces.at(data->Reserved - 1);
}

BOOL WINAPI Property(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD property, PDWORD /*type*/,
                     PBYTE buffer, DWORD size, PDWORD needed) {
    if (property == SPDRP_HARDWAREID) {
        const std::wstring ids = HardwareIdOf(handle, data) + L'\0';
        return CopyProperty(ids.c_str(), (ids.size() + 1) * sizeof(wchar_t), buffer, size, needed);
    }
    const StageDevice* const device = DeviceOf(handle, data);
    if (property == SPDRP_CLASS && device != nullptr && !device->ClassName.empty()) {
        const std::wstring& name = device->ClassName;
        return CopyProperty(name.c_str(), (name.size() + 1) * sizeof(wchar_t), buffer, size,
                            needed);
    }
    if (property == SPDRP_CONFIGFLAGS) {
        constexpr DWORD NoFlags = 0;
        return CopyProperty(&NoFlags, sizeof(NoFlags), buffer, size, needed);
    }
    return FailWith(FALSE, ERROR_INVALID_DATA);
}

BOOL WINAPI SetProperty(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD /*property*/,
                        const BYTE* /*buffer*/, DWORD /*size*/) {
    const StageDevice* const device = DeviceOf(handle, data);
    if (device == nullptr) {
        return FailWith(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    Stage::Current()->Write({.What = Deed::DeviceMarked, .Subject = device->InstanceId()});
    return TRUE;
}

BOOL WINAPI EnumInterface(HDEVINFO handle, PSP_DEVINFO_DATA /*device*/, const GUID* /*guid*/,
                          DWORD index, PSP_DEVICE_INTERFACE_DATA data) {
    if (index >= SetOf(handle).Interfaces.size()) {
        return FailWith(FALSE, ERROR_NO_MORE_ITEMS);
    }
    data->Reserved = index + 1;
    return TRUE;
}

// The path of an interface is the ID of the device behind it.
BOOL WINAPI InterfaceDetail(HDEVINFO handle, PSP_DEVICE_INTERFACE_DATA data,
                            PSP_DEVICE_INTERFACE_DETAIL_DATA_W detail, DWORD size, PDWORD needed,
                            PSP_DEVINFO_DATA device) {
    const std::wstring path =
        L"\\\\?\\" + SetOf(handle).Interfaces.at(static_cast<std::size_t>(data->Reserved) - 1);
    const std::size_t bytes = (path.size() + 1) * sizeof(wchar_t);
    const std::size_t total = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath) + bytes;
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(total);
    }
    if (detail == nullptr || size < total) {
        return FailWith(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(detail->DevicePath, path.c_str(), bytes);
    if (device != nullptr) {
        device->DevInst = 0;
        device->Reserved = data->Reserved;
    }
    return TRUE;
}

} // namespace

DeviceSet& SetOf(HDEVINFO handle) {
    return ContentOf<DeviceSet>(handle);
}

StageDevice* DeviceOf(HDEVINFO handle, const SP_DEVINFO_DATA* data) {
    Stage* const stage = Stage::Current();
    const DeviceSet& set = SetOf(handle);
    if (stage == nullptr || data == nullptr || data->Reserved == 0 ||
        data->Reserved > set.Members.size()) {
        return nullptr;
    }
    return &stage->Devices.at(set.Members[data->Reserved - 1]);
}

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(SetupDiGetClassDevsW, ClassDevices);
REHEARSED(SetupDiDestroyDeviceInfoList, DestroySet);
REHEARSED(SetupDiEnumDeviceInfo, EnumDevice);
REHEARSED(SetupDiGetDeviceInstanceIdW, InstanceId);
REHEARSED(SetupDiGetDeviceRegistryPropertyW, Property);
REHEARSED(SetupDiSetDeviceRegistryPropertyW, SetProperty);
REHEARSED(SetupDiEnumDeviceInterfaces, EnumInterface);
REHEARSED(SetupDiGetDeviceInterfaceDetailW, InterfaceDetail);
