// The class-install parameters that were set for devices.
#pragma once

#include "system.h"

// What was stored for this very function; empty when nothing was, or for another function.
std::vector<BYTE> ClassInstallParamsFor(DI_FUNCTION function, HDEVINFO set,
                                        const SP_DEVINFO_DATA* device);

void ForgetClassInstallParams(HDEVINFO set);
