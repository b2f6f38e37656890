// The two functions of newdev.dll, found by name as the program finds them.
#pragma once

#include "platform/platform.h"

namespace conformance {

// Null when the library does not have it.
UpdateDriverForPlugAndPlayDevicesFunction UpdateDriver();
InstallSelectedDriverFunction InstallSelected();

} // namespace conformance
