#include "setup/switches.h"

#include "common/text.h"
#include "native/random_text.h"
#include "support/doctest_support.h"

TEST_CASE("A command line without a dash has no switch") {
    CHECK(ReadSwitch(L"") == Switch::None);
    CHECK(ReadSwitch(L"i") == Switch::None);
    CHECK(ReadSwitch(L"/i") == Switch::None);
    CHECK(ReadSwitch(L"\x2013i") == Switch::None); // an en dash
}

TEST_CASE("-i installs and -u uninstalls, in any case") {
    CHECK(ReadSwitch(L"-i") == Switch::Install);
    CHECK(ReadSwitch(L"-I") == Switch::Install);
    CHECK(ReadSwitch(L"-u") == Switch::Uninstall);
    CHECK(ReadSwitch(L"-U") == Switch::Uninstall);
}

TEST_CASE("What stands before the first dash does not count") {
    CHECK(ReadSwitch(L"x -i") == Switch::Install);
    CHECK(ReadSwitch(L"   -u") == Switch::Uninstall);
}

TEST_CASE("The switch is the whole rest of the line") {
    CHECK(ReadSwitch(L"-i ") == Switch::Invalid);
    CHECK(ReadSwitch(L"-i x") == Switch::Invalid);
    CHECK(ReadSwitch(L"-i -u") == Switch::Invalid);
    CHECK(ReadSwitch(L"a-b -i") == Switch::Invalid);
    CHECK(ReadSwitch(L"--i") == Switch::Invalid);
    CHECK(ReadSwitch(L"-") == Switch::Invalid);
    CHECK(ReadSwitch(L"-x") == Switch::Invalid);
    CHECK(ReadSwitch(L"-\x0131") == Switch::Invalid); // a dotless i
}

TEST_CASE("A command line of any length is judged") {
    CHECK(ReadSwitch(L"-i" + std::wstring(30000, L' ')) == Switch::Invalid);
    CHECK(ReadSwitch(std::wstring(30000, L'x') + L"-i") == Switch::Install);
}

TEST_CASE("Only a line that ends in its first dash and one letter names a switch") {
    RandomText random(L"-iIuU x");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring line = random.Text(5);
        const std::size_t dash = line.find(L'-');
        const std::wstring rest = dash == std::wstring::npos ? L"" : UpperCase(line.substr(dash));
        const Switch expected = rest.empty()    ? Switch::None
                                : rest == L"-I" ? Switch::Install
                                : rest == L"-U" ? Switch::Uninstall
                                                : Switch::Invalid;
        REQUIRE(ReadSwitch(line) == expected);
    }
}
