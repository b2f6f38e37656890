// A plan as a person reads it on a terminal.
#pragma once

#include "plan/plan.h"

#include <string>

namespace output {

std::string PlanText(const plan::Plan& plan);

} // namespace output
