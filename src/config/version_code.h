// The Windows generation behind a kernel version text.
#pragma once

#include <cstdint>
#include <string_view>

// The version code of a product version such as "6.1.7601.17514": 68 for 5.x, 70 for 6.0, 69
// for 6.1, 72 for 6.2, 73 for everything later. Other texts give other numbers, some of which name
// a generation all the same (4.0 and 3.31 are WINXP). A text without a '.' has the minor number 0.
std::uint32_t VersionCodeOf(std::wstring_view productVersion);

// "WINXP", "VISTA", "WIN7", "WIN10", or an empty name for a code of no known generation.
std::wstring_view NameOfVersionCode(std::uint32_t code);
