// Findings as a person reads them on a terminal, and as code-hosting sites show them.
#pragma once

#include "rules/finding.h"

#include <string>

namespace output {

// Like a compiler's messages, then a summary.
std::string FindingsText(const rules::Findings& findings);

// SARIF 2.1.0. Places are relative to the packet's folder.
std::string FindingsSarif(const rules::Findings& findings);

} // namespace output
