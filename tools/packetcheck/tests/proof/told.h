// What the log of a run, and the plan of it, tell about the same things.
#pragma once

#include "machine/machine.h"
#include "proof/plans.h"

#include <optional>
#include <string_view>

namespace proof {

using machine::Lines;

// The log lines before the rollback, and those of the rollback itself.
Lines BeforeRollback(const Lines& log);
Lines OfRollback(const Lines& log);

// The part between `before` and `after` of each line that has both, in order.
Lines Between(const Lines& log, std::string_view before, std::string_view after);

// Paths that the run wanted gone: of each "RemoveFile: ..." line, whatever came of it. Files named
// oem* are left out: which there are is the store's business.
Lines WantedGone(const Lines& log);

// The log as it is compared: without thread ids, with one text for all outcomes of a deletion, and
// without what threads say side by side and what scripts report.
Lines Comparable(const Lines& log);

// Where the two lists part, as a person wants to read it; empty when they are equal.
std::string Difference(const Lines& planned, const Lines& run);

// Texts of an array of the plan, or of a field in each of its entries.
Lines TextsOf(const Json& list);
Lines TextsOf(const Json& list, const char* field);

// The script lines of a plan as they would be reported if each of them failed.
Lines FilledLines(const Json& run);

} // namespace proof
