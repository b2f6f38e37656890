// The SCSI command that a script writes as text.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// The six bytes of a command written as hexadecimal numbers of at most two digits, separated by
// single commas ("1b,0,0,0,2,0"). A number that is missing or unreadable leaves its byte and all
// later ones 0.
std::array<std::uint8_t, 6> ParseScsiCommand(std::wstring_view text);
