#include "rules/finding.h"

#include <algorithm>
#include <tuple>

namespace rules {

void Sort(Findings& findings) {
    const auto order = [](const Finding& left, const Finding& right) {
        return std::tie(left.Where.File, left.Where.Line, left.Id, left.Message) <
               std::tie(right.Where.File, right.Where.Line, right.Id, right.Message);
    };
    const auto same = [](const Finding& left, const Finding& right) {
        return left.Where.File == right.Where.File && left.Where.Line == right.Where.Line &&
               left.Id == right.Id && left.Message == right.Message;
    };
    std::stable_sort(findings.begin(), findings.end(), order);
    findings.erase(std::unique(findings.begin(), findings.end(), same), findings.end());
}

std::size_t Count(const Findings& findings, Level level) {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(), [level](const Finding& finding) {
            return RuleOf(finding.Id).Severity == level;
        }));
}

} // namespace rules
