#include "setup/uninstall_devices.h"

#include "common/limits.h"
#include "install/devices/device_ids.h"
#include "install/devices/device_nodes.h"
#include "install/devices/device_removal.h"
#include "install/devices/device_walk.h"
#include "install/devices/driver_details.h"

namespace {

// Appends the OEM INF files among the drivers in the device's built list. False when the list
// cannot be read.
bool CollectOemInfs(HDEVINFO set, SP_DEVINFO_DATA& device, TextList& oemInfs) {
    DriverWalk walk(set, device, SPDIT_COMPATDRIVER);
    while (walk.Next()) {
        DriverDetail detail;
        // Windows refuses the question for the size; an answer to it is not trusted here, where
        // what is read decides what is deleted.
        const SizedRead read =
            ReadDriverDetail(set, device, walk.Entry(), {.MaySucceed = false}, detail);
        if (read == SizedRead::NoMemory) {
            return false;
        }
        if (read != SizedRead::Done) {
            WriteLog(L"UnInstall: Get driver detail fail,error code 0x%08X", GetLastError());
            return false;
        }
        const std::wstring inf = UpperCase(detail.InfFileName);
        if (Contains(inf, L"OEM")) {
            AppendDistinct(oemInfs, inf);
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"UnInstall: Enum device driver info fail,error code 0x%08X", GetLastError());
        return false;
    }
    return true;
}

bool RecordDevice(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId,
                  RemovalList& removals, TextList& oemInfs) {
    if (SetupDiBuildDriverInfoList(set, &device, SPDIT_COMPATDRIVER) == FALSE ||
        !CollectOemInfs(set, device, oemInfs)) {
        return false;
    }
    SetupDiDestroyDriverInfoList(set, &device, SPDIT_COMPATDRIVER);
    // Interfaces go before the composite devices that they belong to.
    const bool isInterface = Contains(DeviceIdOf(fullId), L"MI_");
    removals.insert(isInterface ? removals.begin() : removals.end(), {fullId, device});
    return true;
}

bool VisitDevice(HDEVINFO set, SP_DEVINFO_DATA& device, const DeviceIdList& ids,
                 const std::wstring& fullId, RemovalList& removals, TextList& oemInfs) {
    const std::wstring deviceId = DeviceIdOf(fullId);
    for (const std::wstring& id : ids) {
        // An empty ID, from a models line that ends in a comma, is part of every text: it must not
        // remove the user's other devices.
        if (id.empty()) {
            continue;
        }
        // No end at the first match: whoever matches two of the IDs is removed a second time, which
        // fails, is logged, and harms nothing.
        if (Contains(deviceId, UpperCase(Cut(id, DeviceIdCapacity))) &&
            !RecordDevice(set, device, fullId, removals, oemInfs)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool CollectDevicesToRemove(HDEVINFO set, const DeviceIdList& ids, RemovalList& removals,
                            TextList& oemInfs) {
    DeviceWalk walk(set);
    while (walk.Next()) {
        const std::optional<std::wstring> instanceId = ReadInstanceId(set, walk.Entry());
        if (!instanceId) {
            // Ends the collecting; what was recorded until now is removed.
            WriteLog(L"UnInstall: Get device Instance id fail!,error code : 0X%08X",
                     GetLastError());
            return true;
        }
        if (!instanceId->empty() &&
            !VisitDevice(set, walk.Entry(), ids, UpperCase(*instanceId), removals, oemInfs)) {
            return false;
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"UnInstall: Enum device set info fail,error code 0x%08X", GetLastError());
        return false;
    }
    return true;
}

void RemoveDevices(HDEVINFO set, RemovalList& removals) {
    for (RemovalRecord& record : removals) {
        const wchar_t* const id = record.InstanceId.c_str();
        WriteLog(L"UnInstall: Removing device %s", id);
        const Removal removal = RemoveDevice(set, record.Device);
        if (removal.Step == RemovalStep::SetParameters) {
            WriteLog(L"UnInstall: SetupDiSetClassInstallParams:Remove device %s fail!,error code : "
                     L"0X%08X",
                     id, GetLastError());
        } else if (removal.Step == RemovalStep::CallInstaller) {
            WriteLog(L"UnInstall: SetupDiCallClassInstaller:Remove device %s fail!,error code : "
                     L"0X%08X",
                     id, GetLastError());
        } else if (removal.RebootState) {
            WriteLog(L"UnInstall: Device %s removed successfully,reboot state is %d", id,
                     *removal.RebootState);
        }
    }
}
