#include "config/version_code.h"

#include "common/text.h"

#include <array>
#include <utility>

std::uint32_t VersionCodeOf(std::wstring_view productVersion) {
    const std::size_t dot = productVersion.find(L'.');
    // Compared unsigned, so that a negative number counts as a very large one.
    const auto major = static_cast<std::uint32_t>(LeadingNumber(productVersion));
    const auto minor = static_cast<std::uint32_t>(
        dot == std::wstring_view::npos ? 0 : LeadingNumber(productVersion.substr(dot + 1)));
    if (major == 5) {
        return 68;
    }
    if (major == 6 && minor == 2) {
        return 72;
    }
    if (major > 6 || (major == 6 && minor >= 3)) {
        return 73;
    }
    return major - minor + 64;
}

std::wstring_view NameOfVersionCode(std::uint32_t code) {
    // The rows below 68 are met only by unusual version texts such as 3.31.
    static constexpr std::array<std::pair<std::uint32_t, std::wstring_view>, 10> Names{{
        {36, L"WINXP"},
        {37, L"WIN7"},
        {38, L"VISTA"},
        {40, L"WIN10"},
        {41, L"WIN10"},
        {68, L"WINXP"},
        {69, L"WIN7"},
        {70, L"VISTA"},
        {72, L"WIN10"},
        {73, L"WIN10"},
    }};
    for (const auto& [knownCode, name] : Names) {
        if (knownCode == code) {
            return name;
        }
    }
    return {};
}
