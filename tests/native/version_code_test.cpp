#include "config/version_code.h"

#include "native/random_text.h"
#include "support/doctest_support.h"

namespace {

std::wstring GenerationOf(std::wstring_view productVersion) {
    return std::wstring(NameOfVersionCode(VersionCodeOf(productVersion)));
}

} // namespace

TEST_CASE("Kernel version 6.1 is code 69, WIN7") {
    CHECK(VersionCodeOf(L"6.1.7601.17514") == 69);
    CHECK(GenerationOf(L"6.1.7601.17514") == L"WIN7");
}

TEST_CASE("Kernel version 6.2 is code 72, WIN10") {
    CHECK(VersionCodeOf(L"6.2.9200.16384") == 72);
    CHECK(GenerationOf(L"6.2.9200.16384") == L"WIN10");
}

TEST_CASE("Kernel versions 6.3 and 10.0 are code 73, WIN10") {
    CHECK(VersionCodeOf(L"6.3.9600.16384") == 73);
    CHECK(GenerationOf(L"6.3.9600.16384") == L"WIN10");
    CHECK(VersionCodeOf(L"10.0.19041.1") == 73);
    CHECK(GenerationOf(L"10.0.19041.1") == L"WIN10");
}

TEST_CASE("Kernel version 5.2 is code 68, WINXP, and so is every 5.x") {
    CHECK(VersionCodeOf(L"5.2.3790.0") == 68);
    CHECK(GenerationOf(L"5.2.3790.0") == L"WINXP");
    CHECK(VersionCodeOf(L"5.0") == 68);
    CHECK(VersionCodeOf(L"5.99") == 68);
}

TEST_CASE("Kernel version 6.0 is code 70, VISTA") {
    CHECK(VersionCodeOf(L"6.0.6002.18005") == 70);
    CHECK(GenerationOf(L"6.0.6002.18005") == L"VISTA");
}

TEST_CASE("Kernel version 3.51 is code 16, which names no generation") {
    CHECK(VersionCodeOf(L"3.51") == 16);
    CHECK(GenerationOf(L"3.51") == L"");
}

TEST_CASE("Kernel version 4.0 gives the code of WINXP") {
    CHECK(VersionCodeOf(L"4.0") == 68);
    CHECK(GenerationOf(L"4.0.1381.4") == L"WINXP");
}

TEST_CASE("A version without a dot has the minor number 0") {
    CHECK(VersionCodeOf(L"6") == 70);
    CHECK(VersionCodeOf(L"5") == 68);
    CHECK(VersionCodeOf(L"3") == 67);
    CHECK(VersionCodeOf(L"") == 64);
    CHECK(VersionCodeOf(L"6.") == 70);
    CHECK(VersionCodeOf(L"unknown") == 64);
}

TEST_CASE("Blanks and signs before the numbers of a version are read over") {
    CHECK(VersionCodeOf(L" 6. 1") == 69);
    CHECK(VersionCodeOf(L"+6.+1") == 69);
    CHECK(VersionCodeOf(L"6 (build).1") == 69);
    CHECK(VersionCodeOf(L"v6.1") == 63);
}

TEST_CASE("A negative number in a version counts as a very large one") {
    CHECK(VersionCodeOf(L"-1.0") == 73);
    CHECK(VersionCodeOf(L"6.-1") == 73);
    CHECK(VersionCodeOf(L"4.-1") == 69);
}

TEST_CASE("Version codes of unusual texts name a generation where the table has them") {
    CHECK(GenerationOf(L"3.31") == L"WINXP"); // 36
    CHECK(GenerationOf(L"3.30") == L"WIN7");  // 37
    CHECK(GenerationOf(L"3.29") == L"VISTA"); // 38
    CHECK(GenerationOf(L"3.28") == L"");      // 39
    CHECK(GenerationOf(L"3.27") == L"WIN10"); // 40
    CHECK(GenerationOf(L"3.26") == L"WIN10"); // 41
}

TEST_CASE("Exactly ten version codes name a generation") {
    int named = 0;
    for (std::uint32_t code = 0; code < 1000; ++code) {
        named += NameOfVersionCode(code).empty() ? 0 : 1;
    }
    CHECK(named == 10);
    CHECK(NameOfVersionCode(0) == L"");
    CHECK(NameOfVersionCode(71) == L"");
    CHECK(NameOfVersionCode(0xFFFFFFFF) == L"");
}

TEST_CASE("Every major version from 7 on is the newest generation") {
    RandomText random(L"0123456789.-+ a");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring rest = random.Text(12);
        REQUIRE(VersionCodeOf(L"7." + rest) == 73);
        REQUIRE(VersionCodeOf(L"5." + rest) == 68);
        const std::wstring_view name = NameOfVersionCode(VersionCodeOf(rest));
        REQUIRE((name.empty() || name == L"WINXP" || name == L"VISTA" || name == L"WIN7" ||
                 name == L"WIN10"));
    }
}

TEST_CASE("Below major version 5 the code is major less minor and 64") {
    for (std::uint32_t major = 0; major < 5; ++major) {
        for (std::uint32_t minor = 0; minor < 200; ++minor) {
            REQUIRE(VersionCodeOf(std::to_wstring(major) + L"." + std::to_wstring(minor)) ==
                    major - minor + 64);
        }
    }
}
