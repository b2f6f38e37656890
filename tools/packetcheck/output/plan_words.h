// How a plan's facts are put into words, on a terminal and on a page.
#pragma once

#include "plan/plan.h"

#include <string>

namespace output {

// "succeeds", "fails", ...
std::string OutcomeWord(const plan::Run& run);

// What follows it: ": No device matched"; empty for a success.
std::string OutcomeReason(const plan::Run& run);

// "Setup.exe -i"
std::string CommandOf(const plan::Plan& plan);

// "45 s", "3 min 5 s", "2 h 10 min"
std::string SecondsText(std::uint64_t seconds);

// "It waits 17 s; at worst 2 min 5 s, ..."
std::string WaitsText(const plan::Plan& plan);

// "class MODEM: place 3"
std::string ClassText(const plan::Inf& inf);

// What is wrong with the number that the matching waits for; empty when it can be reached.
std::string CountWarning(const plan::Expected& expected);

} // namespace output
