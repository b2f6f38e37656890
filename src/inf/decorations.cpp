#include "inf/decorations.h"

#include "common/text.h"

#include <algorithm>

bool DecorationApplies(std::wstring_view decoration, std::uint16_t architecture) {
    constexpr std::uint16_t Intel = 0;
    constexpr std::uint16_t Itanium = 6;
    constexpr std::uint16_t Amd64 = 9;
    const auto is = [decoration](std::wstring_view name) {
        return EqualIgnoringCase(decoration, name);
    };
    if (std::ranges::none_of(KnownDecorations, is)) {
        return false;
    }
    switch (architecture) {
    case Itanium:
        return !is(L"NTAMD64") && !is(L"NTx86");
    case Amd64:
        return !is(L"NTIA64") && !is(L"NTx86");
    case Intel:
        return !is(L"NTIA64") && !is(L"NTAMD64");
    default:
        return true;
    }
}
