// The device and the driver that are selected in a set, and installing the one on the other.
#include "replacements.h"

#include "devices/nodes.h"
#include "drivers/device_install.h"
#include "drivers/driver_lists.h"
#include "drivers/driver_store.h"
#include "journal.h"

#include <map>

namespace {

struct Selection {
    std::wstring InstanceId;
    std::wstring InfPath;
};

std::map<HDEVINFO, Selection> Selections;

} // namespace

// Windows: remembers the device for calls that work on the whole set. Wine 8: does nothing, FALSE.
BOOL WINAPI FilledSetSelectedDevice(HDEVINFO set, PSP_DEVINFO_DATA device) {
    const std::wstring instanceId = InstanceIdOf(set, device);
    Enter("SetupDiSetSelectedDevice", instanceId);
    if (instanceId.empty()) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    Selections[set] = {instanceId, L""};
    return TRUE;
}

// Windows: remembers the driver for the device; null takes the selection back. Wine 8: raises an
// exception.
BOOL WINAPI FilledSetSelectedDriver(HDEVINFO set, PSP_DEVINFO_DATA device,
                                    PSP_DRVINFO_DATA_W driver) {
    Enter("SetupDiSetSelectedDriverW");
    if (driver == nullptr) {
        Selections[set].InfPath.clear();
        return Succeed();
    }
    const ClassDriver* const found = FindClassDriver(set, device, driver);
    if (found == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    Selections[set] = {InstanceIdOf(set, device), found->InfPath};
    return TRUE;
}

// Windows: installs the selected driver on the selected device; 0xE0000203 without one. Wine 8:
// TRUE, and nothing happens.
BOOL WINAPI FilledInstallSelectedDriver(HWND /*parent*/, HDEVINFO set, LPCWSTR /*reserved*/,
                                        BOOL /*backup*/, PDWORD reboot) {
    const Selection selection = Selections[set];
    Enter("InstallSelectedDriver", selection.InstanceId + L" " + selection.InfPath);
    if (reboot != nullptr) {
        *reboot = 0;
    }
    if (selection.InfPath.empty()) {
        return Fail(NoDriverSelected);
    }
    const std::wstring stored = StoreInf(selection.InfPath);
    return !stored.empty() && InstallOnDevice(selection.InstanceId, stored) ? TRUE : FALSE;
}
