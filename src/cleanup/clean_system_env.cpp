#include "cleanup/clean_system_env.h"

#include "cleanup/clean_device.h"
#include "cleanup/clean_inf.h"
#include "cleanup/remove_file.h"
#include "config/driver_packet.h"
#include "inf/driver_files.h"
#include "inf/models.h"
#include "install/devices/device_nodes.h"
#include "system/serial_services.h"

#include <algorithm>

namespace {

bool CleanDevicesOf(const std::wstring& infPath) {
    DeviceIdList ids;
    std::wstring className;
    if (!GetDeviceIDFromInf(infPath, ids) || !GetInfClassName(infPath, className)) {
        return false;
    }
    // Devices that are not attached are wanted too: they are what earlier installs left.
    DeviceInfoSetOwner set = OpenUsbDevices(0);
    if (!set) {
        WriteLog(L"CleanDevice: Get device set fail!,error code : 0x%08X", GetLastError());
        return false;
    }
    return CleanDevice(className, ids, std::move(set));
}

} // namespace

bool CleanSystemEnv() {
    AdjustSerialServices();
    InfSet infs;
    if (!ListPacketInfs(infs,
                        L"CleanSystemEnv: Get driver packet %s inf set fail,error code 0x%08X")) {
        return false;
    }
    return std::ranges::all_of(infs, CleanDevicesOf) && std::ranges::all_of(infs, CleanInf) &&
           std::ranges::all_of(infs, RemoveFile);
}
