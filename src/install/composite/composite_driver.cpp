#include "install/composite/composite_driver.h"

#include "common/limits.h"
#include "common/paths.h"
#include "common/text.h"
#include "install/devices/device_walk.h"
#include "install/devices/driver_details.h"
#include "platform/system_libraries.h"

namespace {

constexpr std::wstring_view GenericCompositeId = L"USB\\COMPOSITE";

bool LogFailure(const wchar_t* format) {
    WriteLog(format, GetLastError());
    return false;
}

// Restricts the device's class driver list to the one INF that holds the generic driver.
bool PointToUsbInf(HDEVINFO set, SP_DEVINFO_DATA& device, std::wstring& compositeId) {
    SP_DEVINSTALL_PARAMS_W parameters{};
    parameters.cbSize = sizeof(parameters);
    if (SetupDiGetDeviceInstallParamsW(set, &device, &parameters) == FALSE) {
        return LogFailure(L"CompositeDeviceSetup: Get device install param fail,error code 0x%08X");
    }
    parameters.Flags |= DI_ENUMSINGLEINF;
    // The system hides this driver from choice; it is meant to be found by its ID only.
    parameters.FlagsEx |= DI_FLAGSEX_ALLOWEXCLUDEDDRVS;
    compositeId = GenericCompositeId;
    const std::wstring infPath =
        Cut(WindowsFolder(PathCapacity) + L"\\INF\\" + L"USB.INF", PathCapacity);
    infPath.copy(parameters.DriverPath, infPath.size());
    parameters.DriverPath[infPath.size()] = L'\0';
    if (SetupDiSetDeviceInstallParamsW(set, &device, &parameters) == FALSE) {
        return LogFailure(L"CompositeDeviceSetup: Set device install param fail,error code 0x%08X");
    }
    return true;
}

// Selects the generic driver among those of the INF. True also when the INF has none.
bool SelectGenericDriver(HDEVINFO set, SP_DEVINFO_DATA& device) {
    if (SetupDiBuildDriverInfoList(set, &device, SPDIT_CLASSDRIVER) == FALSE) {
        return LogFailure(L"CompositeDeviceSetup: Build driver list fail,error code 0x%08X");
    }
    DriverWalk walk(set, device, SPDIT_CLASSDRIVER);
    while (walk.Next()) {
        DriverDetail detail;
        if (ReadDriverDetail(set, device, walk.Entry(), {}, detail) != SizedRead::Done) {
            return LogFailure(L"CompositeDeviceSetup: Get driver detail fail,error code 0x%08X");
        }
        if (EqualIgnoringCase(detail.HardwareId, GenericCompositeId)) {
            return SetupDiSetSelectedDriverW(set, &device, &walk.Entry()) != FALSE ||
                   LogFailure(L"CompositeDeviceSetup: Set selected driver fail,error code 0x%08X");
        }
    }
    return !walk.BrokeOff() ||
           LogFailure(L"CompositeDeviceSetup: Enum device set info fail,error code 0x%08X");
}

// False only when the library lacks the function. A device on which the driver could not be
// installed, or for which there is no library, keeps the driver that it has.
bool InstallSelected(HDEVINFO set, const std::wstring& compositeId) {
    const HMODULE newDev = LoadSystemLibraryByName(L"NewDev.DLL");
    if (newDev == nullptr) {
        return true;
    }
    const auto install =
        GetFunction<InstallSelectedDriverFunction>(newDev, "InstallSelectedDriver");
    if (install == nullptr) {
        return LogFailure(L"CompositeDeviceSetup: Get function address fail,error code 0x%08X");
    }
    DWORD reboot = 0;
    if (install(nullptr, set, nullptr, TRUE, &reboot) != FALSE) {
        WriteLog(L"CompositeDeviceSetup: Composite device %s was successfully installed",
                 compositeId.c_str());
    } else {
        WriteLog(
            L"CompositeDeviceSetup: Installation of composite device %s fail,error code 0x%08X",
            compositeId.c_str(), GetLastError());
    }
    return true;
}

} // namespace

bool InstallCompositeDriver(HDEVINFO set, SP_DEVINFO_DATA& device, std::wstring& compositeId) {
    if (SetupDiSetSelectedDevice(set, &device) == FALSE) {
        return LogFailure(L"CompositeDeviceSetup: Set selected device fail,error code 0x%08X");
    }
    return PointToUsbInf(set, device, compositeId) && SelectGenericDriver(set, device) &&
           InstallSelected(set, compositeId);
}
