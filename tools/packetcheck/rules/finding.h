// What a check finds.
#pragma once

#include "rules/rule.h"

#include <string>
#include <vector>

namespace rules {

// A place in the packet: a file, relative to the packet's folder, and a line of it (0: the whole
// file).
struct Place {
    std::wstring File;
    std::size_t Line = 0;
};

struct Finding {
    RuleId Id;
    Place Where;
    std::wstring Message;
    // Further lines for the author, such as a section to add.
    std::wstring Advice{};
};

using Findings = std::vector<Finding>;

// By file and line; what is found twice in one place stays once.
void Sort(Findings& findings);

// How many are of this level.
std::size_t Count(const Findings& findings, Level level);

} // namespace rules
