#include "install/composite/composite_setup.h"

#include "config/config_reader.h"
#include "inf/models.h"
#include "install/composite/composite_driver.h"
#include "install/devices/device_nodes.h"
#include "install/devices/newdev.h"

namespace {

enum class SerialSetup { Failed, Installed, NotInstalled };

SerialSetup InstallPacketInf(const wchar_t* compositeId) {
    std::wstring infPath;
    if (!GetDeviceIDInDriverPacket(compositeId, infPath)) {
        WriteLog(L"CompositeDeviceSetup: Get composite device driver inf file path fail,error code "
                 L"0x%08X",
                 GetLastError());
        return SerialSetup::Failed;
    }
    const LibraryOwner newDev(LoadLibraryW(L"NewDev.dll"));
    if (!newDev) {
        WriteLog(L"CompositeDeviceSetup: Load newdev.dll fail,error code 0x%08X", GetLastError());
        return SerialSetup::Failed;
    }
    const auto update = GetFunction<UpdateDriverForPlugAndPlayDevicesFunction>(
        newDev.Get(), "UpdateDriverForPlugAndPlayDevicesW");
    if (update == nullptr) {
        WriteLog(L"CompositeDeviceSetup: Get function UpdateDriverForPlugAndPlayDevices address "
                 L"fail,error code 0x%08X",
                 GetLastError());
        return SerialSetup::Failed;
    }
    WriteLog(L"CompositeDeviceSetup: Installing device %s using inf %s", compositeId,
             infPath.c_str());
    BOOL reboot = FALSE;
    if (!UpdateDriver(update, compositeId, infPath.c_str(), reboot)) {
        // No line, on purpose: the walk over the devices that follows is the second way.
        return SerialSetup::NotInstalled;
    }
    WriteLog(L"CompositeDeviceSetup: Device %s successfully installed with inf %s,reboot status is "
             L"%d",
             compositeId, infPath.c_str(), reboot);
    return SerialSetup::Installed;
}

bool ChangeDeviceState(HDEVINFO set, SP_DEVINFO_DATA& device, std::uint32_t state) {
    SP_PROPCHANGE_PARAMS parameters{};
    parameters.ClassInstallHeader.cbSize = sizeof(parameters.ClassInstallHeader);
    parameters.ClassInstallHeader.InstallFunction = DIF_PROPERTYCHANGE;
    parameters.StateChange = state;
    parameters.Scope = DICS_FLAG_CONFIGSPECIFIC;
    if (SetupDiSetClassInstallParamsW(set, &device, &parameters.ClassInstallHeader,
                                      sizeof(parameters)) != FALSE &&
        SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, set, &device) != FALSE) {
        return true;
    }
    WriteLog(L"ChangeDeviceState: Change composite device state to %d fail,error code 0x%08X",
             state, GetLastError());
    return false;
}

bool IsCompositeDevice(const std::wstring& hardwareId, const std::wstring* compositeId) {
    // Without an ID nothing matches: a final chance that was asked for without a device must not
    // switch off devices of others.
    return compositeId != nullptr && EqualIgnoringCase(BeforeLast(hardwareId, L'&'), *compositeId);
}

// What the walk over the USB devices came to.
struct DeviceWalk {
    bool Failed = false;
    bool FoundDevice = false;
    SP_DEVINFO_DATA Device{};
};

WalkStep VisitDevice(HDEVINFO set, SP_DEVINFO_DATA& device, std::uint32_t state,
                     const std::wstring* compositeId, DeviceWalk& walk) {
    const std::optional<std::wstring> hardwareId = ReadFirstHardwareId(set, device);
    if (!hardwareId) {
        WriteLog(L"CompositeDeviceSetup: Get device id fail,error code 0x%08X", GetLastError());
        walk.Failed = true;
        return WalkStep::Stop;
    }
    if (!IsCompositeDevice(*hardwareId, compositeId)) {
        return WalkStep::Next;
    }
    if (state == CompositeInstall && ReadConfigSwitch(L"USERSETTING", L"LOADUSBCCGP")) {
        walk.FoundDevice = true;
        walk.Device = device;
        return WalkStep::Stop;
    }
    if (state == CompositeEnable || state == CompositeDisable) {
        walk.Failed = !ChangeDeviceState(set, device, state);
    }
    return walk.Failed ? WalkStep::Stop : WalkStep::Next;
}

} // namespace

bool CompositeDeviceSetup(std::uint32_t state, std::wstring* compositeId) {
    if (!ReadConfigSwitch(L"USERSETTING", L"NEEDCOMPOSITEDEAL")) {
        return true;
    }
    if (state == CompositeInstall && ReadConfigSwitch(L"USERSETTING", L"LOADSERIAL")) {
        const SerialSetup result =
            InstallPacketInf(compositeId == nullptr ? L"" : compositeId->c_str());
        if (result != SerialSetup::NotInstalled) {
            return result == SerialSetup::Installed;
        }
    }
    const DeviceInfoSetOwner set = OpenUsbDevices(DIGCF_PRESENT);
    if (!set) {
        WriteLog(L"CompositeDeviceSetup: Get USB device set fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    DeviceWalk walk;
    const WalkEnd end = WalkDevices(set.Get(), [&](SP_DEVINFO_DATA& device) {
        return VisitDevice(set.Get(), device, state, compositeId, walk);
    });
    if (walk.Failed) {
        return false;
    }
    if (walk.FoundDevice) {
        return InstallCompositeDriver(set.Get(), walk.Device, *compositeId);
    }
    if (end == WalkEnd::Failed) {
        WriteLog(L"CompositeDeviceSetup: Enum device set info fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    return true;
}
