#include "install/mode_switch/scsi_command.h"

#include <cstddef>
#include <optional>

namespace {

std::optional<unsigned> HexDigit(wchar_t character) {
    if (character >= L'0' && character <= L'9') {
        return static_cast<unsigned>(character - L'0');
    }
    if (character >= L'a' && character <= L'f') {
        return static_cast<unsigned>(character - L'a') + 10;
    }
    if (character >= L'A' && character <= L'F') {
        return static_cast<unsigned>(character - L'A') + 10;
    }
    return std::nullopt;
}

// Takes one number off the front of the text; nothing when there is none.
std::optional<std::uint8_t> TakeByte(std::wstring_view& text) {
    while (!text.empty() && (text.front() == L' ' || text.front() == L'\t')) {
        text.remove_prefix(1);
    }
    std::optional<unsigned> value;
    for (int digits = 0; digits < 2 && !text.empty(); ++digits) {
        const std::optional<unsigned> digit = HexDigit(text.front());
        if (!digit) {
            break;
        }
        value = value.value_or(0) * 16 + *digit;
        text.remove_prefix(1);
    }
    if (!value) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(*value);
}

} // namespace

std::array<std::uint8_t, 6> ParseScsiCommand(std::wstring_view text) {
    std::array<std::uint8_t, 6> command{};
    for (std::uint8_t& byte : command) {
        const std::optional<std::uint8_t> value = TakeByte(text);
        if (!value) {
            break;
        }
        byte = *value;
        if (!text.starts_with(L',')) {
            break;
        }
        text.remove_prefix(1);
    }
    return command;
}
