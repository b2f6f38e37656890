#include "cleanup/clean_device.h"

#include "common/limits.h"
#include "common/run_state.h"
#include "install/devices/device_ids.h"
#include "install/devices/device_nodes.h"
#include "install/devices/device_removal.h"
#include "install/devices/device_walk.h"

namespace {

void RemoveStaleDevice(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId) {
    const Removal removal = RemoveDevice(set, device);
    if (removal.Step != RemovalStep::Done) {
        WriteLog(L"CleanDevice: Remove device %s fail!,error code : 0X%08X", fullId.c_str(),
                 GetLastError());
        return;
    }
    if (removal.RebootState) {
        WriteLog(L"CleanDevice: Device %s removed successfully,reboot state is %d", fullId.c_str(),
                 *removal.RebootState);
    }
    WriteLog(L"CleanDevice: device %s information in register was removed,because device was not "
             L"exist",
             fullId.c_str());
}

void MarkSwitchedDevice(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId) {
    if (!MarkForReinstall(set, device)) {
        WriteLog(L"CleanDevice: Get device config flag fail,error code 0x%08X", GetLastError());
        return;
    }
    ReinstallMarkedDevices.push_back(fullId);
    WriteLog(L"CleanDevice: Device %s information in register was marked as reinstall "
             L"driver,because it appeared after switch with other driver",
             fullId.c_str());
}

void DealByClass(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId,
                 const std::wstring& className) {
    const std::optional<std::wstring> deviceClass = ReadClassName(set, device);
    if (!deviceClass) {
        WriteLog(L"CleanDevice: Get device class name fail,error code 0x%08X", GetLastError());
        return;
    }
    if (deviceClass->empty() || EqualIgnoringCase(*deviceClass, className)) {
        RemoveStaleDevice(set, device, fullId);
    } else {
        MarkSwitchedDevice(set, device, fullId);
    }
}

bool Matches(const std::wstring& listedId, const std::wstring& deviceId) {
    return SetupMode != UninstallRun && UpperCase(Cut(listedId, DeviceIdCapacity)) == deviceId;
}

void VisitDevice(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& className,
                 const DeviceIdList& ids, const std::wstring& fullId) {
    const std::wstring deviceId = DeviceIdOf(fullId);
    for (const std::wstring& listedId : ids) {
        if (!Matches(listedId, deviceId)) {
            continue;
        }
        WriteLog(L"CleanDevice: Dealing with device %s information in register", fullId.c_str());
        if (device.DevInst == 0) {
            RemoveStaleDevice(set, device, fullId);
            return;
        }
        if (SetupMode != UninstallRun) {
            DealByClass(set, device, fullId, className);
            return;
        }
        // Not reached: nothing matches outside an install run.
        WriteLog(L"CleanDevice: Device %s information in register was left without any "
                 L"change,because it need not",
                 fullId.c_str());
    }
}

} // namespace

bool CleanDevice(const std::wstring& className, const DeviceIdList& ids, DeviceInfoSetOwner set) {
    DeviceWalk walk(set.Get());
    while (walk.Next()) {
        const std::optional<std::wstring> instanceId = ReadInstanceId(set.Get(), walk.Entry());
        if (!instanceId) {
            // Ends the walk but not the cleanup: what is left can still be cleaned by the next INF.
            WriteLog(L"CleanDevice: Get device Instance id fail!,error code : 0x%08X",
                     GetLastError());
            return true;
        }
        if (!instanceId->empty()) {
            VisitDevice(set.Get(), walk.Entry(), className, ids, UpperCase(*instanceId));
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"CleanDevice: Enum device set finish,error code : 0x%08X", GetLastError());
        return false;
    }
    return true;
}
