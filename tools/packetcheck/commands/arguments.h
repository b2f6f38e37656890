// The command line.
#pragma once

#include <string>
#include <vector>

namespace commands {

// Exit codes.
inline constexpr int NothingFound = 0;
inline constexpr int Findings = 1;
inline constexpr int WrongUse = 2; // or what it was to read is unreadable

// Reads the arguments (UTF-8, without the program's name) and does what they ask for.
int Run(std::vector<std::string> arguments);

} // namespace commands
