// What instance IDs say of their devices.
#pragma once

#include <string>
#include <string_view>

// Marks the ID of one function (interface) of a composite device. Searched case-sensitively, in
// upper-cased IDs.
inline constexpr std::wstring_view InterfaceMark = L"&MI_";

// A device's ID is its instance ID cut at the last backslash.
std::wstring DeviceIdOf(std::wstring_view instanceId);
