#include "log_line.h"

namespace quenlor {
namespace {

constexpr std::size_t FrontBytes = sizeof("2024-12-31 23:59:59.999 0x12345678 ") - 1;
constexpr std::size_t LineEndBytes = 2;
constexpr char32_t Replacement = 0xFFFD;

struct Character {
    char32_t Code;
    std::size_t Units; // how many UTF-16 units it took
};

bool IsFirstHalf(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsSecondHalf(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

char32_t UnitAt(const wchar_t* text, std::size_t index) {
    return static_cast<char32_t>(text[index]) & 0xFFFF;
}

Character CharacterAt(const wchar_t* text, std::size_t length, std::size_t index) {
    const char32_t unit = UnitAt(text, index);
    if (!IsFirstHalf(unit)) {
        return {IsSecondHalf(unit) ? Replacement : unit, 1};
    }
    const char32_t next = index + 1 < length ? UnitAt(text, index + 1) : 0;
    if (!IsSecondHalf(next)) {
        return {Replacement, 1};
    }
    return {0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00), 2};
}

std::size_t Utf8Size(char32_t code) {
    if (code < 0x80) {
        return 1;
    }
    if (code < 0x800) {
        return 2;
    }
    return code < 0x10000 ? 3 : 4;
}

void PutUtf8(char32_t code, std::size_t size, char* to) {
    static constexpr unsigned Lead[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    for (std::size_t i = size - 1; i > 0; --i) {
        to[i] = static_cast<char>(0x80U | (code & 0x3FU));
        code >>= 6;
    }
    to[0] = static_cast<char>(Lead[size] | code);
}

// By hand: the compiler's narrow printf would double the size of the library.
char* PutNumber(char* to, unsigned long value, unsigned base, int digits, char after) {
    for (int i = digits - 1; i >= 0; --i) {
        to[i] = "0123456789ABCDEF"[value % base];
        value /= base;
    }
    to[digits] = after;
    return to + digits + 1;
}

void PutFront(const LineOrigin& origin, char* to) {
    to = PutNumber(to, origin.Year, 10, 4, '-');
    to = PutNumber(to, origin.Month, 10, 2, '-');
    to = PutNumber(to, origin.Day, 10, 2, ' ');
    to = PutNumber(to, origin.Hour, 10, 2, ':');
    to = PutNumber(to, origin.Minute, 10, 2, ':');
    to = PutNumber(to, origin.Second, 10, 2, '.');
    to = PutNumber(to, origin.Millisecond, 10, 3, ' ');
    *to++ = '0';
    *to++ = 'x';
    PutNumber(to, origin.ThreadId, 16, 8, ' ');
}

} // namespace

std::size_t WholeCharacters(const wchar_t* text, std::size_t length) {
    return length > 0 && IsFirstHalf(UnitAt(text, length - 1)) ? length - 1 : length;
}

std::size_t MakeLine(const LineOrigin& origin, const wchar_t* text, std::size_t length, char* line,
                     std::size_t capacity) {
    if (capacity < FrontBytes + LineEndBytes) {
        return 0;
    }
    PutFront(origin, line);
    std::size_t used = FrontBytes;
    for (std::size_t i = 0; i < length;) {
        const Character character = CharacterAt(text, length, i);
        const std::size_t size = Utf8Size(character.Code);
        if (used + size + LineEndBytes > capacity) {
            break;
        }
        PutUtf8(character.Code, size, line + used);
        used += size;
        i += character.Units;
    }
    line[used++] = '\r';
    line[used++] = '\n';
    return used;
}

} // namespace quenlor
