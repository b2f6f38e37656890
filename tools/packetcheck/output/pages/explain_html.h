// What runs did, as one page that needs nothing else.
#pragma once

#include "explain/explanation.h"

#include <string>
#include <vector>

namespace output {

std::string ExplanationHtml(const std::vector<explain::Explanation>& runs);

} // namespace output
