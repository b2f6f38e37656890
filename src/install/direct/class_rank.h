// The order of device classes in which INF files are offered.
#pragma once

#include <cstdint>
#include <string_view>

// PORTS 1, MODEM 2, NET 3, MEDIA 4, no class 5; every other class is 0 and so comes first.
// `className` is upper-cased.
std::uint32_t RankOfClass(std::wstring_view className);

// The rank of an INF whose class cannot be read.
inline constexpr std::uint32_t RankOfUnreadableClass = 5;
