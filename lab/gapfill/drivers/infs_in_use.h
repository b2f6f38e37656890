// Which INF files of the store devices have their drivers from.
#pragma once

#include "system.h"

// Whether a device, plugged or only remembered, has a driver from the INF of this name.
bool DevicesUse(const std::wstring& inf);
