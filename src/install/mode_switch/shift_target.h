// Which device a switch order is for.
#pragma once

#include <string_view>

// True when a hardware ID is that of the device to switch by control code: equal to `configured`
// but for its "&REV_" part, case ignored. `configured` itself is not cut.
bool MatchesShiftDevice(std::wstring_view hardwareId, std::wstring_view configured);
