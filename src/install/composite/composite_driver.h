// The system's generic composite driver.
#pragma once

#include "platform/platform.h"

#include <string>

// Puts the driver for "USB\COMPOSITE" of the system's USB.INF on the device, and overwrites
// `compositeId` with that ID. False with one line "CompositeDeviceSetup: ..."; an installation that
// fails at the very end is logged and true, and a missing newdev library is true without a line.
bool InstallCompositeDriver(HDEVINFO set, SP_DEVINFO_DATA& device, std::wstring& compositeId);
