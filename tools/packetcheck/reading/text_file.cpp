#include "reading/text_file.h"

#include "output/utf8.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace reading {

namespace {

constexpr std::string_view Utf8MarkBytes = "\xEF\xBB\xBF";
constexpr std::string_view Utf16MarkBytes = "\xFF\xFE";
constexpr std::string_view Utf16BigMarkBytes = "\xFE\xFF";

// True when the bytes are what an encoder of UTF-8 writes.
bool IsUtf8(std::string_view bytes) {
    std::size_t following = 0;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (following != 0) {
            if ((value & 0xC0U) != 0x80U) {
                return false;
            }
            --following;
        } else if (value >= 0xF0U && value < 0xF5U) {
            following = 3;
        } else if (value >= 0xE0U && value < 0xF0U) {
            following = 2;
        } else if (value >= 0xC2U && value < 0xE0U) {
            following = 1;
        } else if (value >= 0x80U) {
            return false;
        }
    }
    return following == 0;
}

// How many of the first bytes are zero at even and at odd places: text of Latin letters in UTF-16
// has its zeros in one half.
std::pair<std::size_t, std::size_t> ZerosAt(std::string_view bytes) {
    std::pair<std::size_t, std::size_t> zeros;
    for (std::size_t index = 0; index < std::min<std::size_t>(bytes.size(), 512); ++index) {
        if (bytes[index] == '\0') {
            ++(index % 2 == 0 ? zeros.first : zeros.second);
        }
    }
    return zeros;
}

Encoding EncodingWithoutMark(std::string_view bytes) {
    const auto [even, odd] = ZerosAt(bytes);
    const std::size_t many = std::min<std::size_t>(bytes.size(), 512) / 4;
    if (odd > many && even <= odd / 4) {
        return Encoding::Utf16NoMark;
    }
    if (even > many && odd <= even / 4) {
        return Encoding::Utf16Big;
    }
    const bool ascii = std::all_of(bytes.begin(), bytes.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < 0x80U;
    });
    if (ascii) {
        return Encoding::Ascii;
    }
    return IsUtf8(bytes) ? Encoding::Utf8 : Encoding::Ansi;
}

Encoding EncodingOf(std::string_view bytes) {
    if (bytes.starts_with(Utf8MarkBytes)) {
        return Encoding::Utf8Mark;
    }
    if (bytes.starts_with(Utf16MarkBytes)) {
        return Encoding::Utf16;
    }
    return bytes.starts_with(Utf16BigMarkBytes) ? Encoding::Utf16Big : EncodingWithoutMark(bytes);
}

std::wstring FromUtf16(std::string_view bytes, bool bigEndian) {
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        const auto first = static_cast<unsigned char>(bytes[index]);
        const auto second = static_cast<unsigned char>(bytes[index + 1]);
        text += static_cast<wchar_t>(bigEndian ? (first << 8U) | second : (second << 8U) | first);
    }
    return text.starts_with(L'\xFEFF') ? text.substr(1) : text;
}

std::wstring FromLatin(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    }
    return text;
}

std::wstring Decoded(std::string_view bytes, Encoding encoding) {
    switch (encoding) {
    case Encoding::Utf8Mark:
        return Wide(bytes.substr(Utf8MarkBytes.size()));
    case Encoding::Utf8:
        return Wide(bytes);
    case Encoding::Utf16:
    case Encoding::Utf16NoMark:
        return FromUtf16(bytes, false);
    case Encoding::Utf16Big:
        return FromUtf16(bytes, true);
    default:
        return FromLatin(bytes);
    }
}

// Lines end in CR LF, LF or CR.
TextList LinesOf(std::wstring_view text) {
    TextList lines;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of(L"\r\n");
        lines.emplace_back(text.substr(0, end));
        if (end == std::wstring_view::npos) {
            break;
        }
        const bool pair = text.substr(end, 2) == L"\r\n";
        text.remove_prefix(end + (pair ? 2 : 1));
    }
    return lines;
}

} // namespace

TextFile DecodeText(std::string_view bytes) {
    TextFile file;
    file.Bytes = bytes.size();
    file.How = EncodingOf(bytes);
    file.Lines = LinesOf(Decoded(bytes, file.How));
    return file;
}

TextFile ReadTextFile(const std::wstring& path) {
    const auto close = [](std::FILE* handle) { std::fclose(handle); };
    const std::unique_ptr<std::FILE, decltype(close)> file(_wfopen(path.c_str(), L"rb"), close);
    TextFile result;
    if (file != nullptr) {
        std::string bytes;
        std::string part(1U << 16U, '\0');
        std::size_t count = 0;
        while ((count = std::fread(part.data(), 1, part.size(), file.get())) != 0) {
            bytes.append(part, 0, count);
        }
        result = DecodeText(bytes);
    }
    result.Path = path;
    return result;
}

std::wstring_view NameOf(Encoding encoding) {
    switch (encoding) {
    case Encoding::Missing:
        return L"missing";
    case Encoding::Ascii:
        return L"ASCII";
    case Encoding::Ansi:
        return L"an ANSI code page";
    case Encoding::Utf8:
        return L"UTF-8";
    case Encoding::Utf8Mark:
        return L"UTF-8 with a byte order mark";
    case Encoding::Utf16:
        return L"UTF-16 little endian";
    case Encoding::Utf16NoMark:
        return L"UTF-16 without a byte order mark";
    case Encoding::Utf16Big:
        return L"UTF-16 big endian";
    }
    return {};
}

} // namespace reading
