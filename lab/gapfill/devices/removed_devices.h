// What a set still knows of a device that was removed.
#pragma once

#include "system.h"

// Keeps the device's install parameters; called before it is removed.
void KeepInstallParams(HDEVINFO set, PSP_DEVINFO_DATA device);

void ForgetRemovedDevices(HDEVINFO set);
