// Plans as one page that needs nothing else.
#pragma once

#include "plan/plan.h"

#include <string>
#include <vector>

namespace output {

std::string PlanHtml(const std::vector<plan::Plan>& plans);

} // namespace output
