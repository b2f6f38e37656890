// The sections and keys that the program reads of Setup.ini.
#pragma once

#include "common/text.h"

#include <optional>

namespace rules {

enum class ValueKind {
    Number,
    Seconds,
    Switch, // its low byte counts
    Text,
};

struct KnownKey {
    std::wstring_view Section;
    std::wstring_view Key;
    ValueKind Kind = ValueKind::Number;
    std::size_t Longest = 0; // of a text, in characters
};

// The key's row; nothing for a key that the program does not read in this section. Operation lines
// and variables are known as well.
std::optional<KnownKey> FindKnownKey(std::wstring_view section, std::wstring_view key);

// Names of sections, and of a section's keys, for suggestions.
TextList KnownSections();
TextList KnownKeys(std::wstring_view section);

// A section's name taken apart: "ENUM.INSTALL.WIN7" is ENUM, for installs, on WIN7.
struct SectionName {
    std::wstring Base;
    std::wstring Mode;       // "INSTALL", "UNINSTALL" or empty
    std::wstring Generation; // "WIN7", ... or empty
    // False for a decoration that is never looked up.
    bool IsLookedUp = true;
};
SectionName TakeApart(std::wstring_view section);

bool IsScriptSection(std::wstring_view base);
// The number of an operation line's key; nothing for other keys. "OPER7" has none: it is never
// read.
std::optional<int> OperationNumber(std::wstring_view key);

} // namespace rules
