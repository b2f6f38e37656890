// Text files as they lie on disk: their encoding, and their lines.
#pragma once

#include "common/text.h"

#include <string>

namespace reading {

enum class Encoding {
    Missing,     // no such file, or it cannot be read
    Ascii,       // nothing beyond 7 bits
    Ansi,        // a code page
    Utf8,        // without a byte order mark, and with letters beyond ASCII
    Utf8Mark,    // with a byte order mark
    Utf16,       // little endian with a byte order mark
    Utf16NoMark, // little endian without one
    Utf16Big,    // big endian, with or without a mark
};

struct TextFile {
    std::wstring Path; // full
    Encoding How = Encoding::Missing;
    // Line 1 is Lines[0]; without line ends. Letters of a code page are taken for Latin ones.
    TextList Lines;
    std::size_t Bytes = 0;

    [[nodiscard]] bool Exists() const { return How != Encoding::Missing; }
};

TextFile ReadTextFile(const std::wstring& path);

// The same for a file's bytes.
TextFile DecodeText(std::string_view bytes);

// How the encoding is called: "UTF-16 big endian", ...
std::wstring_view NameOf(Encoding encoding);

} // namespace reading
