#include "conformance/statement.h"

#include <algorithm>
#include <string_view>

namespace conformance {

namespace {

std::vector<Statement>& Registered() {
    static std::vector<Statement> all;
    return all;
}

} // namespace

const char* NameOf(Authority authority) {
    switch (authority) {
    case Authority::Tested:
        return "tested on Windows";
    case Authority::TestedNotOnWine:
        return "tested on Windows, not so in Wine";
    case Authority::Documented:
        return "documented";
    case Authority::Unjudged:
        break;
    }
    return "to be asked";
}

std::vector<Statement> AllStatements() {
    std::vector<Statement> all = Registered();
    std::sort(all.begin(), all.end(), [](const Statement& left, const Statement& right) {
        return std::string_view(left.Id) < std::string_view(right.Id);
    });
    return all;
}

Registration::Registration(const Statement& statement) {
    Registered().push_back(statement);
}

} // namespace conformance
