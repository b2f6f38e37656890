// Explaining the runs of a log.
#pragma once

#include "explain/explanation.h"

namespace explain {

// What one run did. `file` is how the log is to be called.
Explanation ExplainRun(const Run& run, const std::string& file);

struct LogExplanation {
    LogFacts Facts;
    // The last run alone, or all of them in their order.
    std::vector<Explanation> Runs;
};

// Throws when the file cannot be read.
LogExplanation ExplainLog(const std::wstring& path, bool all);

} // namespace explain
