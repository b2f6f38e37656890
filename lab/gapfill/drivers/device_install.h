// Installs a driver on one device, in the steps that the device installer takes.
#pragma once

#include "system.h"

// Installs the best driver that the INF (full path, in the INF store) has for the device. False
// leaves the reason in the last error: ERROR_NO_MORE_ITEMS when the INF has none.
bool InstallOnDevice(const std::wstring& instanceId, const std::wstring& infPath);
