// The text of a profile file (Setup.ini, Lang.ini) with its line numbers.
#pragma once

#include "reading/text_file.h"

namespace reading {

struct IniEntry {
    std::wstring Key;
    // Blanks around it and one pair of quotation marks around the whole are gone.
    std::wstring Value;
    std::size_t Line = 0;
};

struct IniSection {
    std::wstring Name;
    std::size_t Line = 0;
    std::vector<IniEntry> Entries;

    // The first entry with this key, case ignored; null when there is none.
    [[nodiscard]] const IniEntry* Find(std::wstring_view key) const;
};

struct IniText {
    TextFile File;
    // In file order. Of two sections of one name only the first one counts.
    std::vector<IniSection> Sections;

    // The first section of this name, case ignored; null when there is none.
    [[nodiscard]] const IniSection* Find(std::wstring_view name) const;
    // The line of a key's first entry in the section that counts; 0 when there is none.
    [[nodiscard]] std::size_t LineOf(std::wstring_view section, std::wstring_view key) const;
};

IniText ReadIni(const std::wstring& path);
IniText IniFrom(TextFile file);

} // namespace reading
