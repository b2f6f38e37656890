// The system's newdev library, loaded by name while it is needed.
#pragma once

#include "platform/owners.h"

// Installs the INF on every present device with this hardware ID, whatever driver it has now.
// False: the last error tells why. `reboot` tells whether Windows must be restarted.
bool UpdateDriver(UpdateDriverForPlugAndPlayDevicesFunction update, const wchar_t* hardwareId,
                  const wchar_t* infPath, BOOL& reboot);
