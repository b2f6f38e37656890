// The one function that Quenlor64.DLL exports.
#include "log_line.h"
#include "log_place.h"

#include "platform/owners.h"

#include <cstdarg>
#include <cwchar>

namespace {

quenlor::LineOrigin OriginNow() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear,   now.wMonth,  now.wDay,          now.wHour,
            now.wMinute, now.wSecond, now.wMilliseconds, GetCurrentThreadId()};
}

std::size_t CutLength(const wchar_t* text) {
    std::size_t length = 0;
    while (length < quenlor::MaxTextLength && text[length] != L'\0') {
        ++length;
    }
    return quenlor::WholeCharacters(text, length);
}

} // namespace

extern "C" void WriteLog(const wchar_t* format, ...) {
    // Callers log first and read the last error afterwards.
    const LastErrorKeeper keeper;
    // Zeroed: a format that fails half-way leaves what it has written, ended.
    wchar_t text[quenlor::MaxTextLength] = {};
    va_list arguments = {};
    va_start(arguments, format);
    // This very function and no other of its family: it takes "%s" as a wide string with every
    // compiler, and writes no terminator when the text fills the buffer.
    const int length = _vsnwprintf(text, quenlor::MaxTextLength, format, arguments);
    va_end(arguments);
    const std::size_t kept = length >= 0 ? static_cast<std::size_t>(length) : CutLength(text);
    char line[quenlor::MaxLineBytes];
    const std::size_t size =
        quenlor::MakeLine(OriginNow(), text, kept, line, quenlor::MaxLineBytes);
    // A line that can be written nowhere is lost: there is no better place to report it.
    quenlor::AppendToLog(line, size);
}
