#include "install/staging/reinstall_flags.h"

#include "common/run_state.h"
#include "install/devices/device_ids.h"
#include "install/devices/device_nodes.h"
#include "install/devices/maker_devices.h"

#include <algorithm>

namespace {

// Whether a device keeps its registration as it is.
enum class Verdict { Unchanged, DealtWith };

bool IsClassToMark(const std::wstring& className) {
    // A class name never equals a class GUID, so that every device with a class is marked.
    // Intended: whatever driver holds the device now, the staged one is to be looked for.
    return !EqualIgnoringCase(className, L"{36FC9E60-C465-11CF-8056-444553540000}") ||
           !EqualIgnoringCase(className, L"{8A824C6B-ACDA-4F01-9F4C-3E204EE8BFC9}");
}

Verdict DealWith(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId) {
    WriteLog(L"SetDeviceReinstallFlag: Dealing with device %s information in register",
             fullId.c_str());
    const std::optional<std::wstring> className = ReadClassName(set, device);
    if (!className) {
        WriteLog(L"SetDeviceReinstallFlag: Get device class name fail,error code 0x%08X",
                 GetLastError());
        return Verdict::DealtWith;
    }
    WriteLog(L"SetDeviceReinstallFlag ---------------%s----------------------", className->c_str());
    if (className->empty() || !IsClassToMark(*className)) {
        WriteLog(L"SetDeviceReinstallFlag: Device %s information in register was left without any "
                 L"change,because it need not",
                 fullId.c_str());
        return Verdict::Unchanged;
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
    return Verdict::DealtWith;
}

void VisitDevice(HDEVINFO set, SP_DEVINFO_DATA& device, const std::wstring& fullId) {
    const std::wstring deviceId = DeviceIdOf(fullId);
    for (const std::wstring_view entry : MakerDevices) {
        if (!Contains(entry, deviceId) || SetupMode == 0) {
            continue;
        }
        WriteLog(L"SetDeviceReinstallFlag "
                 L"---------------------------------%d-----------------------------",
                 static_cast<int>(SetupMode));
        if (EqualIgnoringCase(entry, deviceId) &&
            DealWith(set, device, fullId) == Verdict::DealtWith) {
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
    const WalkEnd end = WalkDevices(set.Get(), [&set](SP_DEVINFO_DATA& device) {
        const std::optional<std::wstring> instanceId = ReadInstanceId(set.Get(), device);
        if (!instanceId) {
            WriteLog(L"SetDeviceReinstallFlag: Get device Instance id fail!,error code : 0x%08X",
                     GetLastError());
            return WalkStep::Stop;
        }
        if (!instanceId->empty()) {
            VisitDevice(set.Get(), device, UpperCase(*instanceId));
        }
        return WalkStep::Next;
    });
    if (end == WalkEnd::Failed) {
        WriteLog(L"SetDeviceReinstallFlag: Enum device set finish,error code : 0x%08X",
                 GetLastError());
        return 0;
    }
    return 1;
}
