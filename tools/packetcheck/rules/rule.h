// The rules that a packet is checked against. Their texts stand in docs/packet-check.md, from which
// the table is made when the tool is built.
#pragma once

#include <string_view>
#include <vector>

namespace rules {

enum class Level { Error, Warning, Note };

enum class RuleId {
#define RULE(identifier, name, level, what, happens, mend) identifier,
#include "generated/rules_table.inc"
#undef RULE
};

struct Rule {
    RuleId Id;
    std::string_view Name; // "class-empty"
    Level Severity;
    std::wstring_view What;    // what it finds
    std::wstring_view Happens; // on a user's machine
    std::wstring_view Mend;
};

// All of them, in the page's order.
const std::vector<Rule>& AllRules();

const Rule& RuleOf(RuleId id);

// "error", "warning", "note"
std::string_view NameOf(Level level);

} // namespace rules
