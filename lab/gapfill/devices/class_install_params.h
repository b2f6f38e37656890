// The class-install parameters that were set for devices.
#pragma once

#include "system.h"

void ForgetClassInstallParams(HDEVINFO set);
