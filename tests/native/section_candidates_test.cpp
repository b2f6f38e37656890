#include "config/section_candidates.h"

#include "native/random_text.h"
#include "support/doctest_support.h"

TEST_CASE("A section is looked up under six names, from the most specific to the plain one") {
    CHECK(SectionCandidates(L"ENUM", L"INSTALL", L"WIN7", L"NTx64") ==
          TextList{L"ENUM.INSTALL.WIN7.NTx64", L"ENUM.INSTALL.WIN7", L"ENUM.INSTALL",
                   L"ENUM.WIN7.NTx64", L"ENUM.WIN7", L"ENUM"});
}

TEST_CASE("An unknown generation leaves its place in the section names empty") {
    CHECK(
        SectionCandidates(L"S", L"UNINSTALL", L"", L"NTx64") ==
        TextList{L"S.UNINSTALL..NTx64", L"S.UNINSTALL.", L"S.UNINSTALL", L"S..NTx64", L"S.", L"S"});
}

TEST_CASE("Composed section names are cut to 259 characters") {
    const std::wstring section(255, L's');
    const TextList names = SectionCandidates(section, L"INSTALL", L"WIN7", L"NTx64");
    CHECK(names[0] == section + L".INS");
    CHECK(names[1] == section + L".INS");
    CHECK(names[2] == section + L".INS");
    CHECK(names[3] == section + L".WIN");
    CHECK(names[4] == section + L".WIN");
    CHECK(names[5] == section);
    CHECK(SectionCandidates(std::wstring(251, L's'), L"INSTALL", L"", L"")[2].size() == 259);
}

TEST_CASE("Whatever the words are, there are six names and none is longer than a buffer") {
    RandomText random(L"AB.\x00E4 ");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring section = random.Text(270);
        const std::wstring mode = random.Text(12);
        const std::wstring os = random.Text(12);
        const TextList names = SectionCandidates(section, mode, os, L"NTx64");
        REQUIRE(names.size() == 6);
        REQUIRE(names.back() == Cut(section, 260));
        for (const std::wstring& name : names) {
            REQUIRE(name.size() <= 259);
            REQUIRE(name.starts_with(names.back()));
        }
        REQUIRE(names[0] == Cut(section + L"." + mode + L"." + os + L".NTx64", 260));
        REQUIRE(names[3] == Cut(section + L"." + os + L".NTx64", 260));
    }
}
