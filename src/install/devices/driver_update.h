// The system's own way of installing a driver on the devices that are present.
#pragma once

#include "platform/platform.h"

// The function of the newdev library that UpdateDriver needs. Null when the library or the function
// is not there; one of the two lines is then logged, with the last error.
UpdateDriverForPlugAndPlayDevicesFunction FindUpdateDriver(const wchar_t* noLibraryLine,
                                                           const wchar_t* noFunctionLine);

// Installs the INF on every present device with this hardware ID, whatever driver it has now.
// False: the last error tells why. `reboot` tells whether Windows must be restarted.
bool UpdateDriver(UpdateDriverForPlugAndPlayDevicesFunction update, const wchar_t* hardwareId,
                  const wchar_t* infPath, BOOL& reboot);
