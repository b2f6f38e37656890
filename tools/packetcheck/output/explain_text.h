// What a run did, as a person reads it on a terminal.
#pragma once

#include "explain/explanation.h"

#include <string>
#include <vector>

namespace output {

std::string ExplanationText(const explain::Explanation& explanation);

// One line per log, then how often each cause occurs.
struct LogLine {
    std::string File;
    // Empty: not the program's log, or it cannot be read; `Reason` says which.
    std::vector<explain::Explanation> LastRun;
    std::string Reason;
};
std::string SummaryText(const std::vector<LogLine>& logs);

} // namespace output
