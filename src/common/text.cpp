#include "common/text.h"

#include <algorithm>
#include <limits>

namespace {

constexpr wchar_t FoldUp(wchar_t character) {
    return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A')
                                                  : character;
}

constexpr bool IsBlank(wchar_t character) {
    return character == L' ' || (character >= L'\t' && character <= L'\r');
}

} // namespace

std::wstring Cut(std::wstring_view text, std::size_t capacity) {
    return std::wstring(text.substr(0, capacity == 0 ? 0 : capacity - 1));
}

std::wstring UpperCase(std::wstring_view text) {
    std::wstring result(text);
    std::ranges::transform(result, result.begin(), FoldUp);
    return result;
}

bool EqualIgnoringCase(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(left, right,
                              [](wchar_t a, wchar_t b) { return FoldUp(a) == FoldUp(b); });
}

bool Contains(std::wstring_view text, std::wstring_view part) {
    return text.find(part) != std::wstring_view::npos;
}

bool ListHolds(const TextList& list, std::wstring_view text) {
    return std::ranges::any_of(
        list, [text](const std::wstring& entry) { return EqualIgnoringCase(entry, text); });
}

void AppendDistinct(TextList& list, std::wstring_view text) {
    if (!ListHolds(list, text)) {
        list.emplace_back(text);
    }
}

std::wstring BeforeLast(std::wstring_view text, wchar_t mark) {
    return std::wstring(text.substr(0, text.rfind(mark)));
}

std::wstring AfterLast(std::wstring_view text, wchar_t mark) {
    const std::size_t position = text.rfind(mark);
    return std::wstring(position == std::wstring_view::npos ? text : text.substr(position + 1));
}

std::wstring ReplaceAfterLast(std::wstring_view text, wchar_t mark, std::wstring_view tail) {
    const std::size_t position = text.rfind(mark);
    const std::size_t kept = position == std::wstring_view::npos ? 0 : position + 1;
    return std::wstring(text.substr(0, kept)).append(tail);
}

std::wstring DecimalText(std::uint32_t number) {
    std::wstring digits;
    do {
        digits.insert(digits.begin(), static_cast<wchar_t>(L'0' + number % 10));
        number /= 10;
    } while (number != 0);
    return digits;
}

std::int32_t LeadingNumber(std::wstring_view text) {
    constexpr std::int64_t Highest = std::numeric_limits<std::int32_t>::max();
    std::size_t position = 0;
    while (position < text.size() && IsBlank(text[position])) {
        ++position;
    }
    bool negative = false;
    if (position < text.size() && (text[position] == L'-' || text[position] == L'+')) {
        negative = text[position] == L'-';
        ++position;
    }
    std::int64_t value = 0;
    for (; position < text.size() && text[position] >= L'0' && text[position] <= L'9'; ++position) {
        // One beyond the highest is the magnitude of the lowest number.
        value = std::min(value * 10 + (text[position] - L'0'), Highest + 1);
    }
    return static_cast<std::int32_t>(negative ? -value : std::min(value, Highest));
}
