// What runs did, as data for other tools. The fields are described in docs/packet-check.md.
#pragma once

#include "explain/explanation.h"

#include <string>
#include <vector>

namespace output {

// One object for one run, an array for several.
std::string ExplanationJson(const std::vector<explain::Explanation>& runs);

} // namespace output
