// The parts of a run, told in order.
#pragma once

#include "plan/plan.h"

namespace plan {

// Fills Steps, Waits and Gone of a run whose Operations are known already.
void TellSteps(const std::vector<rehearsal::Event>& events, Run& run);

} // namespace plan
