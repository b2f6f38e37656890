// The pages tell the truth: their examples of Setup.ini are run as they stand there.
#include "docs/page.h"
#include "docs/scenarios.h"
#include "support/doctest_support.h"

#include <algorithm>

namespace {

const scenarios::Scenario* ScenarioOf(const std::string& name) {
    const auto& all = scenarios::All();
    const auto found = std::find_if(
        all.begin(), all.end(), [&name](const auto& scenario) { return scenario.Name == name; });
    return found == all.end() ? nullptr : &*found;
}

std::string AllPages() {
    std::string text;
    for (const char* name : {"setup-ini.md", "deployment.md"}) {
        const std::string page = page::Read(name);
        REQUIRE_MESSAGE(!page.empty(), name << " cannot be read");
        text += page;
    }
    return text;
}

} // namespace

TEST_CASE("Every ini block of the pages is an example with a scenario of its own") {
    const std::string text = AllPages();
    const std::vector<page::Example> examples = page::ExamplesIn(text);
    CHECK(examples.size() == page::CountIniBlocks(text));
    CHECK(examples.size() == scenarios::All().size());
    for (const page::Example& example : examples) {
        CAPTURE(example.Name);
        CHECK(ScenarioOf(example.Name) != nullptr);
        CHECK(std::count_if(examples.begin(), examples.end(), [&example](const auto& other) {
                  return other.Name == example.Name;
              }) == 1);
        CHECK(!example.Ini.empty());
        CHECK(!example.Expected.empty());
    }
}

TEST_CASE("The examples of Setup.ini do what the pages say") {
    for (const page::Example& example : page::ExamplesIn(AllPages())) {
        CAPTURE(example.Name);
        const scenarios::Scenario* const scenario = ScenarioOf(example.Name);
        REQUIRE(scenario != nullptr);
        const machine::Lines told = scenarios::Tell(*scenario, example.Ini);
        CHECK(page::WithWildcards(told, example.Expected) == example.Expected);
    }
}
