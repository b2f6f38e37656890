// Text helpers. Case is folded for the ASCII letters only, everywhere in the program: hardware IDs,
// section names and switches are ASCII, and a locale must not change what matches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using TextList = std::vector<std::wstring>;

// The text as it fits into a buffer of `capacity` wide characters: cut to capacity - 1.
std::wstring Cut(std::wstring_view text, std::size_t capacity);

// The text with a to z replaced by A to Z.
std::wstring UpperCase(std::wstring_view text);

// True when both texts are equal, the case of ASCII letters ignored.
bool EqualIgnoringCase(std::wstring_view left, std::wstring_view right);

// True when `part` occurs in `text`, case-sensitively. An empty part always occurs.
bool Contains(std::wstring_view text, std::wstring_view part);

// True when the list holds `text`, the case of ASCII letters ignored.
bool ListHolds(const TextList& list, std::wstring_view text);

// Appends `text` unless the list holds it already, the case of ASCII letters ignored.
void AppendDistinct(TextList& list, std::wstring_view text);

// The text before the last `mark`, the whole text when there is none.
std::wstring BeforeLast(std::wstring_view text, wchar_t mark);

// The text after the last `mark`, the whole text when there is none.
std::wstring AfterLast(std::wstring_view text, wchar_t mark);

// The text up to and including the last `mark`, followed by `tail`; nothing of the text is kept
// when it holds no mark.
std::wstring ReplaceAfterLast(std::wstring_view text, wchar_t mark, std::wstring_view tail);

// The number in decimal digits. (The library's own function would bring a whole formatting engine
// along.)
std::wstring DecimalText(std::uint32_t number);

// The decimal number at the start of the text: leading blanks and one sign are allowed, reading
// stops at the first other character. 0 when there is no number; numbers out of range are clamped.
std::int32_t LeadingNumber(std::wstring_view text);
