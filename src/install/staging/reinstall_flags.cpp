#include "install/staging/reinstall_flags.h"

#include "common/run_state.h"
#include "install/devices/device_ids.h"
#include "install/devices/device_nodes.h"
#include "install/devices/device_walk.h"
#include "install/devices/maker_devices.h"

namespace {

// Deals with a device of the maker, whatever class it is in: the staged driver is to be looked for,
// whoever's driver holds the device now.
void DealWith(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId) {
    WriteLog(L"SetDeviceReinstallFlag: Dealing with device %s information in register",
             fullId.c_str());
    const std::optional<std::wstring> className = ReadClassName(set, device);
    if (!className) {
        WriteLog(L"SetDeviceReinstallFlag: Get device class name fail,error code 0x%08X",
                 GetLastError());
        return;
    }
    WriteLog(L"SetDeviceReinstallFlag ---------------%s----------------------", className->c_str());
    if (className->empty()) {
        WriteLog(L"SetDeviceReinstallFlag: Device %s information in register was left without any "
                 L"change,because it need not",
                 fullId.c_str());
        return;
    }
    WriteLog(
        L"SetDeviceReinstallFlag ---------------sssssssssssssssssssssssssss----------------------");
    if (MarkForReinstall(set, device)) {
        WriteLog(L"SetDeviceReinstallFlag: Device %s information in register was marked as "
                 L"reinstall driver,because it appeared after switch with other driver",
                 fullId.c_str());
    } else {
        WriteLog(L"SetDeviceReinstallFlag: Get device config flag fail,error code 0x%08X",
                 GetLastError());
    }
}

void VisitDevice(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId) {
    const std::wstring deviceId = DeviceIdOf(fullId);
    for (const std::wstring_view entry : MakerDevices) {
        if (!Contains(entry, deviceId) || SetupMode == UninstallRun) {
            continue;
        }
        WriteLog(L"SetDeviceReinstallFlag "
                 L"---------------------------------%d-----------------------------",
                 static_cast<int>(SetupMode));
        if (EqualIgnoringCase(entry, deviceId)) {
            DealWith(set, device, fullId);
            return;
        }
    }
}

} // namespace

std::uint32_t SetDeviceReinstallFlag() {
    WriteLog(L"SetDeviceReinstallFlag Enter");
    const DeviceInfoSetOwner set = OpenUsbDevices(0);
    if (!set) {
        WriteLog(L"SetDeviceReinstallFlag: Get device set fail!,error code : 0x%08X",
                 GetLastError());
        return 0;
    }
    DeviceWalk walk(set.Get());
    while (walk.Next()) {
        const std::optional<std::wstring> instanceId = ReadInstanceId(set.Get(), walk.Entry());
        if (!instanceId) {
            // Ends the walk, not the marking: what was marked until now stays marked.
            WriteLog(L"SetDeviceReinstallFlag: Get device Instance id fail!,error code : 0x%08X",
                     GetLastError());
            return 1;
        }
        if (!instanceId->empty()) {
            VisitDevice(set.Get(), walk.Entry(), UpperCase(*instanceId));
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"SetDeviceReinstallFlag: Enum device set finish,error code : 0x%08X",
                 GetLastError());
        return 0;
    }
    return 1;
}
