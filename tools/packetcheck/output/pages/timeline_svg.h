// The picture of a run: its time from left to right, its threads as lanes.
#pragma once

#include "explain/explanation.h"

#include <string>

namespace output {

// Steps as numbered blocks in the main thread's lane, waits shaded, one dot per line of the log.
// Empty for a run whose lines have no times, or that took none.
std::string TimelineSvg(const explain::Explanation& run);

// The colour of the step with this number, from 0.
std::string StepColour(std::size_t number);

} // namespace output
