#include "machine/variants.h"

#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

namespace machine {

namespace {

const std::map<std::string, std::function<void(Variants&)>>& Words() {
    using enum Variants::Order;
    using enum Variants::SizeQuery;
    using enum Variants::LastError;
    static const std::map<std::string, std::function<void(Variants&)>> words = {
        {"devices=arrival", [](Variants& v) { v.Devices = ByArrival; }},
        {"devices=reversed", [](Variants& v) { v.Devices = Reversed; }},
        {"detail=succeeds", [](Variants& v) { v.DriverDetail = Succeeds; }},
        {"detail=1784", [](Variants& v) { v.DriverDetail = BadBuffer; }},
        {"last-error=kept", [](Variants& v) { v.AfterSuccess = Kept; }},
        {"last-error=stray", [](Variants& v) { v.AfterSuccess = Stray; }},
        {"lists=one-class", [](Variants& v) { v.CompatibleListsOfOneClass = true; }},
        {"uninstall=files", [](Variants& v) { v.UninstallDeletesFiles = true; }},
        {"equal-inf=new-name", [](Variants& v) { v.EqualInfKeepsItsName = false; }},
    };
    return words;
}

} // namespace

Variants Variants::From(std::string_view words) {
    Variants variants;
    std::istringstream stream{std::string(words)};
    for (std::string word; stream >> word;) {
        const auto found = Words().find(word);
        if (found == Words().end()) {
            throw std::invalid_argument("no variant of Windows is called " + word);
        }
        found->second(variants);
    }
    return variants;
}

Variants Variants::FromEnvironment() {
    const char* const words = std::getenv("SETUP_TESTS_WINDOWS");
    return From(words == nullptr ? "" : words);
}

} // namespace machine
