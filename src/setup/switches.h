// The program's command line: one switch.
#pragma once

#include <string_view>

enum class Switch { None, Install, Uninstall, Invalid };

// Reads the switch: the whole text from the first '-' to the end of the line, case ignored, is "-i"
// or
// "-u". None without any '-'; everything else is invalid, also a trailing blank.
Switch ReadSwitch(std::wstring_view commandLine);
