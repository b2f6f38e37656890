#include "install/composite/composite_setup.h"

#include "config/config_reader.h"
#include "inf/packet_ids.h"
#include "install/composite/composite_driver.h"
#include "install/devices/device_nodes.h"
#include "install/devices/device_walk.h"
#include "install/devices/driver_update.h"

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
    const auto update = FindUpdateDriver(
        L"CompositeDeviceSetup: Load newdev.dll fail,error code 0x%08X",
        L"CompositeDeviceSetup: Get function UpdateDriverForPlugAndPlayDevices address fail,error "
        L"code 0x%08X");
    if (update == nullptr) {
        return SerialSetup::Failed;
    }
    WriteLog(L"CompositeDeviceSetup: Installing device %s using inf %s", compositeId,
             infPath.c_str());
    BOOL reboot = FALSE;
    if (!UpdateDriver(update, compositeId, infPath.c_str(), reboot)) {
        // No line yet: the walk over the devices is still to come, and has lines of its own.
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

// Walks over the devices with the ID: states 1 and 2 change each of them; state 0 with LOADUSBCCGP
// ends at the first and leaves it in `toInstall`. False with its log line.
bool VisitDevices(HDEVINFO set, std::uint32_t state, const std::wstring* compositeId,
                  std::optional<SP_DEVINFO_DATA>& toInstall) {
    DeviceWalk walk(set);
    while (walk.Next()) {
        const std::optional<std::wstring> hardwareId = ReadFirstHardwareId(set, walk.Entry());
        if (!hardwareId) {
            WriteLog(L"CompositeDeviceSetup: Get device id fail,error code 0x%08X", GetLastError());
            return false;
        }
        if (!IsCompositeDevice(*hardwareId, compositeId)) {
            continue;
        }
        if (state == CompositeInstall && ReadConfigSwitch(L"USERSETTING", L"LOADUSBCCGP")) {
            toInstall = walk.Entry();
            return true;
        }
        if ((state == CompositeEnable || state == CompositeDisable) &&
            !ChangeDeviceState(set, walk.Entry(), state)) {
            return false;
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"CompositeDeviceSetup: Enum device set info fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    return true;
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
    std::optional<SP_DEVINFO_DATA> toInstall;
    if (!VisitDevices(set.Get(), state, compositeId, toInstall)) {
        return false;
    }
    // Without an ID no device was found.
    return compositeId == nullptr || !toInstall ||
           InstallCompositeDriver(set.Get(), *toInstall, *compositeId);
}
