#include "inf/decorations.h"

#include "common/text.h"
#include "native/random_text.h"
#include "support/doctest_support.h"

namespace {

constexpr std::uint16_t Intel = 0;
constexpr std::uint16_t Arm = 5;
constexpr std::uint16_t Itanium = 6;
constexpr std::uint16_t Amd64 = 9;
constexpr std::uint16_t Unknown = 0xFFFF;

// Those of the known decorations that apply.
TextList Applying(std::uint16_t architecture) {
    TextList result;
    for (const std::wstring_view decoration : KnownDecorations) {
        if (DecorationApplies(decoration, architecture)) {
            result.emplace_back(decoration);
        }
    }
    return result;
}

} // namespace

TEST_CASE("On x64 the empty decoration, NT and NTAMD64 apply") {
    CHECK(Applying(Amd64) == TextList{L"", L"NT", L"NTAMD64"});
}

TEST_CASE("On x86 the empty decoration, NT and NTx86 apply") {
    CHECK(Applying(Intel) == TextList{L"", L"NT", L"NTx86"});
}

TEST_CASE("On Itanium the empty decoration, NT and NTIA64 apply") {
    CHECK(Applying(Itanium) == TextList{L"", L"NT", L"NTIA64"});
}

TEST_CASE("On any other architecture every known decoration applies") {
    const TextList all{L"", L"NT", L"NTx86", L"NTIA64", L"NTAMD64"};
    CHECK(Applying(Arm) == all);
    CHECK(Applying(Unknown) == all);
}

TEST_CASE("A decoration applies in any letter case") {
    CHECK(DecorationApplies(L"ntamd64", Amd64));
    CHECK(DecorationApplies(L"NTamd64", Amd64));
    CHECK(DecorationApplies(L"nt", Amd64));
    CHECK_FALSE(DecorationApplies(L"ntX86", Amd64));
}

TEST_CASE("A decoration with a Windows version or another suffix never applies") {
    CHECK_FALSE(DecorationApplies(L"NTamd64.6.1", Amd64));
    CHECK_FALSE(DecorationApplies(L"NT.6.1", Amd64));
    CHECK_FALSE(DecorationApplies(L"NTamd64.", Amd64));
    CHECK_FALSE(DecorationApplies(L"NTamd64 ", Amd64));
    CHECK_FALSE(DecorationApplies(L"NTARM64", Arm));
    CHECK_FALSE(DecorationApplies(L".", Amd64));
}

TEST_CASE("Only texts that are a known decoration ever apply") {
    RandomText random(L"NTntx8664IAamd.");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring decoration = random.Text(7);
        const std::wstring upper = UpperCase(decoration);
        const bool known = upper.empty() || upper == L"NT" || upper == L"NTX86" ||
                           upper == L"NTIA64" || upper == L"NTAMD64";
        REQUIRE(DecorationApplies(decoration, Unknown) == known);
        REQUIRE((known || !DecorationApplies(decoration, Amd64)));
    }
}
