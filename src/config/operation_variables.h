// The "$" variables in the parameters of an operation line.
//
// A line is `opcode,<fixed fields>,P1,P2,...`; a parameter that begins with "$" names a variable
// whose value only the running system or Setup.ini knows.
#pragma once

#include "common/text.h"

// The number of fields, opcode included, in front of a line's parameters.
inline constexpr std::size_t FileOperFixedFields = 5;
inline constexpr std::size_t RegeditFixedFields = 6;

// Puts the expanded parameters of a file operation line into `parameters`. Variables: WINDOWS,
// SYSTEM, CD, OSPARTION, OSDRIVER, else the key of that name in section USER_ENV_PARA. False when
// the line is empty, has fewer fields than its fixed ones, or names a folder that the system does
// not tell.
bool ExpandFileOperVariables(const std::wstring& line, TextList& parameters);

// The same for a registry request. Variables: USERKEY, Wow6432Node, DEVID, else the key of that
// name in section USER_ENV_PARA. False only when the line is empty: one with fewer fields than its
// fixed ones has no parameters, and is refused when it is carried out.
bool ExpandRegeditVariables(const std::wstring& line, TextList& parameters);
