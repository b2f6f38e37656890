#include "machine/text.h"

#include "machine/guarded_memory.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace machine {

namespace {

wchar_t LowerOf(wchar_t character) {
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a')
                                                  : character;
}

} // namespace

std::string Utf8(std::wstring_view text) {
    const UnguardedScope unguarded;
    const int length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

std::wstring Wide(std::string_view utf8) {
    const UnguardedScope unguarded;
    const int length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, result.data(), size);
    return result;
}

std::wstring Lower(std::wstring_view text) {
    const UnguardedScope unguarded;
    std::wstring result(text);
    std::ranges::transform(result, result.begin(), LowerOf);
    return result;
}

std::wstring Upper(std::wstring_view text) {
    const UnguardedScope unguarded;
    std::wstring result(text);
    for (wchar_t& character : result) {
        if (character >= L'a' && character <= L'z') {
            character = static_cast<wchar_t>(character - L'a' + L'A');
        }
    }
    return result;
}

std::wstring Folded(std::wstring_view text) {
    const UnguardedScope unguarded;
    std::wstring result(text);
    CharLowerBuffW(result.data(), static_cast<DWORD>(result.size()));
    return result;
}

bool SameText(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(left, right, {}, LowerOf, LowerOf);
}

bool StartsWith(std::wstring_view text, std::wstring_view start) {
    return SameText(text.substr(0, start.size()), start);
}

std::string HexText(unsigned long long value) {
    const UnguardedScope unguarded;
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
    std::string text(digits.data(), end);
    std::transform(text.begin(), text.end(), text.begin(), [](char digit) {
        return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
    });
    return "0x" + text;
}

std::wstring GuidText(const GUID& guid) {
    std::array<wchar_t, 40> text{};
    wsprintfW(text.data(), L"{%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", guid.Data1,
              guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3],
              guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text.data();
}

std::wstring FileName(std::wstring_view path) {
    const UnguardedScope unguarded;
    const std::size_t cut = path.rfind(L'\\');
    return std::wstring(cut == std::wstring_view::npos ? path : path.substr(cut + 1));
}

std::wstring Folder(std::wstring_view path) {
    const UnguardedScope unguarded;
    const std::size_t cut = path.rfind(L'\\');
    return std::wstring(cut == std::wstring_view::npos ? std::wstring_view{}
                                                       : path.substr(0, cut + 1));
}

} // namespace machine
