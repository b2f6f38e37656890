// doctest, with readable output for the texts that our tests compare.
#pragma once

#include <doctest/doctest.h>

#include <string>
#include <vector>

namespace doctest {

// Lists one line each, so that two journals can be compared by eye.
template <>
struct StringMaker<std::vector<std::string>> {
    static String convert(const std::vector<std::string>& lines) {
        std::string text = "{";
        for (const std::string& line : lines) {
            text += "\n    \"" + line + "\"";
        }
        return (text + (lines.empty() ? "}" : "\n}")).c_str();
    }
};

// Wide texts with everything beyond ASCII as "\u....".
template <>
struct StringMaker<std::wstring> {
    static String convert(const std::wstring& wide) {
        std::string text = "\"";
        for (const wchar_t character : wide) {
            constexpr const char* Digits = "0123456789ABCDEF";
            const auto code = static_cast<unsigned>(character);
            if (code >= 0x20 && code < 0x7F) {
                text += static_cast<char>(code);
            } else {
                text += {'\\',
                         'u',
                         Digits[code >> 12U & 15U],
                         Digits[code >> 8U & 15U],
                         Digits[code >> 4U & 15U],
                         Digits[code & 15U]};
            }
        }
        return (text + "\"").c_str();
    }
};

template <>
struct StringMaker<std::vector<std::wstring>> {
    static String convert(const std::vector<std::wstring>& texts) {
        std::string text = "{";
        for (const std::wstring& entry : texts) {
            text += std::string("\n    ") + StringMaker<std::wstring>::convert(entry).c_str();
        }
        return (text + (texts.empty() ? "}" : "\n}")).c_str();
    }
};

} // namespace doctest
