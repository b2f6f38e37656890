// The maker's devices, by hardware ID.
#pragma once

#include <array>
#include <string_view>

inline constexpr std::array<std::wstring_view, 4> MakerDevices{
    L"USB\\VID_3A9D&PID_9001", L"USB\\VID_3A9D&PID_9003", L"USB\\VID_3A9D&PID_9011",
    L"USB\\VID_3A9D&PID_901E"};
