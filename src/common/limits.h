// Sizes of the program's fixed buffers, in wide characters including the terminating zero. Longer
// texts are cut.
#pragma once

#include <cstddef>

inline constexpr std::size_t PathCapacity = 260;
inline constexpr std::size_t DeviceIdCapacity = 200;
inline constexpr std::size_t ConfigLineCapacity = 1024;
inline constexpr std::size_t ClassNameCapacity = 512;
