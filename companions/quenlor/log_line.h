// Makes the bytes of one log line. No Windows in here: texts are UTF-16 units in wchar_t, whatever
// the width of wchar_t is.
#pragma once

#include <cstddef>

namespace quenlor {

// Longest text of one line in UTF-16 units; what is longer is cut.
constexpr std::size_t MaxTextLength = 4096;
// Room for the front part, the longest text (at most three bytes per unit) and the line end.
constexpr std::size_t MaxLineBytes = 64 + 3 * MaxTextLength;

// Local time and thread of a line.
struct LineOrigin {
    unsigned Year, Month, Day, Hour, Minute, Second, Millisecond;
    unsigned long ThreadId;
};

// `length` without the first half of a surrogate pair whose second half was cut off.
std::size_t WholeCharacters(const wchar_t* text, std::size_t length);

// Writes "date time thread text CR LF" as UTF-8 into `line` (not terminated) and returns the number
// of bytes, 0 when not even the front part fits. A text for which there is no room is cut at a
// whole character; half surrogate pairs become U+FFFD; line breaks inside the text stay as they
// are.
std::size_t MakeLine(const LineOrigin& origin, const wchar_t* text, std::size_t length, char* line,
                     std::size_t capacity);

} // namespace quenlor
