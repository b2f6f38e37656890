// The program's command line: one switch.
#pragma once

#include <string_view>

enum class Switch { None, Install, Uninstall, Invalid };

// Reads the switch. Everything from the first '-' on counts, in either case: "-i" and "-u" are the
// two switches, anything else, such as a blank behind them, is Invalid. None without any '-'.
Switch ReadSwitch(std::wstring_view commandLine);
