#include "setup/uninstall_devices.h"

#include "common/limits.h"
#include "install/devices/device_ids.h"

namespace {

// Appends the OEM INF files among the drivers in the device's built list. False when the list
// cannot be read.
bool CollectOemInfs(HDEVINFO set, SP_DEVINFO_DATA& device, TextList& oemInfs) {
    bool readable = true;
    const WalkEnd end =
        WalkDrivers(set, device, SPDIT_COMPATDRIVER, [&](SP_DRVINFO_DATA_V2_W& driver) {
            DriverDetail detail;
            const DetailResult result = ReadDriverDetail(set, device, driver, detail);
            if (result == DetailResult::Failed) {
                WriteLog(L"UnInstall: Get driver detail fail,error code 0x%08X", GetLastError());
            }
            readable = result == DetailResult::Read;
            if (!readable) {
                return WalkStep::Stop;
            }
            const std::wstring inf = UpperCase(detail.InfFileName);
            if (Contains(inf, L"OEM")) {
                AppendDistinct(oemInfs, inf);
            }
            return WalkStep::Next;
        });
    if (end == WalkEnd::Failed) {
        WriteLog(L"UnInstall: Enum device driver info fail,error code 0x%08X", GetLastError());
        return false;
    }
    return readable;
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
        // Goes on after a match: a device that matches two IDs is recorded twice. The second
        // removal then fails and is logged, which harms nothing.
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
    bool recorded = true;
    const WalkEnd end = WalkDevices(set, [&](SP_DEVINFO_DATA& device) {
        const std::optional<std::wstring> instanceId = ReadInstanceId(set, device);
        if (!instanceId) {
            WriteLog(L"UnInstall: Get device Instance id fail!,error code : 0X%08X",
                     GetLastError());
            return WalkStep::Stop;
        }
        if (!instanceId->empty()) {
            recorded = VisitDevice(set, device, ids, UpperCase(*instanceId), removals, oemInfs);
        }
        return recorded ? WalkStep::Next : WalkStep::Stop;
    });
    if (end == WalkEnd::Failed) {
        WriteLog(L"UnInstall: Enum device set info fail,error code 0x%08X", GetLastError());
        return false;
    }
    return recorded;
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
