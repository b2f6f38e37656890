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
    std::wstring instanceId;
    std::wstring infPath;
};

std::map<HDEVINFO, Selection> selections;

} // namespace

// Windows: remembers the device for calls that work on the whole set. Wine 8: does nothing, FALSE.
BOOL WINAPI FilledSetSelectedDevice(HDEVINFO set, PSP_DEVINFO_DATA device) {
    const std::wstring instanceId = InstanceIdOf(set, device);
    Enter("SetupDiSetSelectedDevice", instanceId);
    if (instanceId.empty()) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    selections[set] = {instanceId, L""};
    return TRUE;
}

// Windows: remembers the driver for the device. Wine 8: raises an exception.
BOOL WINAPI FilledSetSelectedDriver(HDEVINFO set, PSP_DEVINFO_DATA device,
                                    PSP_DRVINFO_DATA_W driver) {
    Enter("SetupDiSetSelectedDriverW");
    const ClassDriver* const found = FindClassDriver(set, device, driver);
    if (found == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    selections[set] = {InstanceIdOf(set, device), found->infPath};
    return TRUE;
}

// Windows: installs the selected driver on the selected device; 0xE0000203 without one. Wine 8:
// TRUE, and nothing happens.
BOOL WINAPI FilledInstallSelectedDriver(HWND /*parent*/, HDEVINFO set, LPCWSTR /*reserved*/,
                                        BOOL /*backup*/, PDWORD reboot) {
    const Selection selection = selections[set];
    Enter("InstallSelectedDriver", selection.instanceId + L" " + selection.infPath);
    if (reboot != nullptr) {
        *reboot = 0;
    }
    if (selection.infPath.empty()) {
        return Fail(kNoDriverSelected);
    }
    const std::wstring stored = StoreInf(selection.infPath);
    return !stored.empty() && InstallOnDevice(selection.instanceId, stored) ? TRUE : FALSE;
}
