#include "rules/rule.h"

namespace rules {

const std::vector<Rule>& AllRules() {
    static const std::vector<Rule> rules = {
#define RULE(identifier, name, level, what, happens, mend)                                         \
    {RuleId::identifier, name, Level::level, what, happens, mend},
#include "generated/rules_table.inc"
#undef RULE
    };
    return rules;
}

const Rule& RuleOf(RuleId id) {
    return AllRules().at(static_cast<std::size_t>(id));
}

std::string_view NameOf(Level level) {
    switch (level) {
    case Level::Error:
        return "error";
    case Level::Warning:
        return "warning";
    case Level::Note:
        return "note";
    }
    return {};
}

} // namespace rules
