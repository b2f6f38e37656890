// A plan as data, for other tools. The fields are described in docs/packet-check.md.
#pragma once

#include "plan/plan.h"

#include <string>
#include <vector>

namespace output {

// One object for one plan, an array for several.
std::string PlanJson(const std::vector<plan::Plan>& plans);

} // namespace output
