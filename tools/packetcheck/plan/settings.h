// The settings that a run reads, and the time that they make it take.
#pragma once

#include "plan/plan.h"

namespace plan {

// Each setting once, in the order in which the run first asks for it; operation lines are left out.
std::vector<Setting> SettingsOf(const std::vector<rehearsal::Event>& events);

// Seconds that an install takes at most, rollback included: nothing when nothing bounds it. A stage
// must stand. Windows' own time, for installations and removals, is not in it.
std::optional<std::uint64_t> WorstCaseSeconds(const Plan& plan);

} // namespace plan
