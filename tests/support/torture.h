// Failing every call once: a road through the program is run to count its calls that can fail, then
// once for each of them, with that call failing. However a system misbehaves, the program must end,
// leave nothing open, write only lines that it knows and tell the truth about the outcome.
#pragma once

#include "machine/machine.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

struct Road {
    std::string Name;
    // Describes a fresh machine.
    std::function<void(machine::Machine&)> Describe;
    // Runs the program's function; 0 means failure.
    std::function<int()> Run;
    // What the road promises about its result, seen from the machine it ran on. Asserts by itself.
    std::function<void(const machine::Machine&, int)> Check;
    // The unharmed road's result.
    int Result = 1;
    // Calls that read settings fail as well.
    bool CountSettings = false;
    // Functions whose failure may leave the main thread waiting for ever: its workers then cannot
    // tell it that they are there.
    std::set<std::string> MayWaitForEver{};
};

// Runs the road as told above, with each of these errors, asserts, and prints the figures.
void FailEachCall(const Road& road, const std::vector<DWORD>& errors = {ERROR_ACCESS_DENIED,
                                                                        ERROR_NO_SYSTEM_RESOURCES});

// True when the line comes from a format that the program's sources contain.
bool IsKnownLogLine(const std::string& line);

// The first line that says that something failed, empty when none does. Lines that begin with one
// of `harmless` do not count.
std::string FailureLine(const machine::Lines& log, const std::vector<std::string>& harmless = {});
