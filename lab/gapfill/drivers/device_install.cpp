#include "drivers/device_install.h"

#include "originals.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

namespace {

// What Wine's own device installer asks the class installer for, in this order.
constexpr DI_FUNCTION Steps[] = {
    DIF_SELECTBESTCOMPATDRV,   DIF_ALLOW_INSTALL,     DIF_INSTALLDEVICEFILES,
    DIF_REGISTER_COINSTALLERS, DIF_INSTALLINTERFACES, DIF_INSTALLDEVICE,
};

bool LimitToInf(HDEVINFO set, SP_DEVINFO_DATA* device, const std::wstring& infPath) {
    SP_DEVINSTALL_PARAMS_W params = {};
    params.cbSize = sizeof(params);
    if (!SETUPAPI(SetupDiGetDeviceInstallParamsW)(set, device, &params)) {
        return false;
    }
    if (infPath.size() >= std::size(params.DriverPath)) {
        return Fail(ERROR_FILENAME_EXCED_RANGE) != FALSE;
    }
    params.Flags |= DI_ENUMSINGLEINF;
    std::wmemcpy(params.DriverPath, infPath.c_str(), infPath.size() + 1);
    return SETUPAPI(SetupDiSetDeviceInstallParamsW)(set, device, &params) != FALSE;
}

bool HasDriver(HDEVINFO set, SP_DEVINFO_DATA* device) {
    SP_DRVINFO_DATA_W driver = {};
    driver.cbSize = sizeof(driver);
    if (!SETUPAPI(SetupDiBuildDriverInfoList)(set, device, SPDIT_COMPATDRIVER)) {
        return false;
    }
    if (!SETUPAPI(SetupDiEnumDriverInfoW)(set, device, SPDIT_COMPATDRIVER, 0, &driver)) {
        return Fail(ERROR_NO_MORE_ITEMS) != FALSE;
    }
    return true;
}

bool TakeSteps(HDEVINFO set, SP_DEVINFO_DATA* device) {
    return std::ranges::all_of(Steps, [&](DI_FUNCTION step) {
        // Steps that nobody handles leave this error, which is no failure.
        return SETUPAPI(SetupDiCallClassInstaller)(step, set, device) ||
               GetLastError() == static_cast<DWORD>(ERROR_DI_DO_DEFAULT);
    });
}

} // namespace

bool InstallOnDevice(const std::wstring& instanceId, const std::wstring& infPath) {
    const HDEVINFO set = SETUPAPI(SetupDiCreateDeviceInfoList)(nullptr, nullptr);
    if (set == INVALID_HANDLE_VALUE) {
        return false;
    }
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    const bool installed =
        SETUPAPI(SetupDiOpenDeviceInfoW)(set, instanceId.c_str(), nullptr, 0, &device) != FALSE &&
        LimitToInf(set, &device, infPath) && HasDriver(set, &device) && TakeSteps(set, &device);
    const LastErrorKeeper keeper;
    SETUPAPI(SetupDiDestroyDeviceInfoList)(set);
    return installed;
}
