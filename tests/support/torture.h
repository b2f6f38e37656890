// Failing calls: a scenario of the program is run to count its calls that can fail, then again and
// again with one of them failing, two, or many by chance. However a system misbehaves, the program
// must end, leave nothing open, write only lines that it knows and tell the truth about the
// outcome.
#pragma once

#include "machine/machine.h"
#include "support/seeds.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

struct Scenario {
    std::string Name;
    // Describes a fresh machine.
    std::function<void(machine::Machine&)> Describe;
    // Runs the program's function; 0 means failure.
    std::function<int()> Run;
    // What the scenario promises about its result, seen from the machine it ran on. Asserts by
    // itself.
    std::function<void(const machine::Machine&, int)> Check;
    // The unharmed run's result.
    int Result = 1;
    // Calls that read settings fail as well.
    bool CountSettings = false;
    // Functions whose failure may leave the main thread waiting for ever: its workers then cannot
    // tell it that they are there.
    std::set<std::string> MayWaitForEver{};
    // Functions whose failure may turn the failure that another call causes into success.
    std::set<std::string> MayMendAFailure{};
};

// Runs the scenario as told above, with each of these errors, asserts, and prints the figures. With
// `every` 7 only one call in seven fails, for each error others; all of them in a campaign.
void FailEachCall(const Scenario& scenario,
                  const std::vector<DWORD>& errors = {ERROR_ACCESS_DENIED,
                                                      ERROR_NO_SYSTEM_RESOURCES},
                  int every = 1);

// For each seed either two of the calls fail, and no such pair may succeed where the first alone
// fails; or any number of them by chance.
void FailAtRandom(const Scenario& scenario, const Seeds& seeds);

// For each seed one call fails, and the threads run in another order.
void FailInAnyOrder(const Scenario& scenario, const Seeds& seeds);

// True when the line comes from a format that the program's sources contain.
bool IsKnownLogLine(const std::string& line);

// The first line that says that something failed, empty when none does. Lines that begin with one
// of `harmless` do not count.
std::string FailureLine(const machine::Lines& log, const std::vector<std::string>& harmless = {});
