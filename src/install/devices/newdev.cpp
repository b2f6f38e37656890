#include "install/devices/newdev.h"

bool UpdateDriver(UpdateDriverForPlugAndPlayDevicesFunction update, const wchar_t* hardwareId,
                  const wchar_t* infPath, BOOL& reboot) {
    reboot = FALSE;
    return update(nullptr, hardwareId, infPath, INSTALLFLAG_FORCE, &reboot) != FALSE;
}
