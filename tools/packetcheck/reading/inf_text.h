// The text of an INF file with its line numbers. What an INF means is the system parser's to say;
// this reader tells where in the file it stands, and what stands in sections that nobody asks for.
#pragma once

#include "reading/text_file.h"

#include <map>

namespace reading {

// One entry of a section; a continued line is one entry.
struct InfEntry {
    std::size_t Line = 0; // of the file, from 1
    bool HasKey = false;
    // String keys are substituted, quotes are gone.
    std::wstring Key;
    TextList Values;
};

struct InfSection {
    std::wstring Name;
    std::size_t Line = 0; // of its first heading; a section may go on under a second one
    std::vector<InfEntry> Entries;
};

class InfText {
public:
    InfText() = default;
    explicit InfText(const TextFile& file);

    [[nodiscard]] const std::vector<InfSection>& Sections() const { return sections_; }
    // By name, case ignored; null when there is none.
    [[nodiscard]] const InfSection* Find(std::wstring_view name) const;
    // The section's entries with this key, case ignored.
    [[nodiscard]] std::vector<const InfEntry*> Entries(std::wstring_view section,
                                                       std::wstring_view key) const;

private:
    void ReadLine(const std::wstring& line, std::size_t number);
    void Substitute();

    std::vector<InfSection> sections_;
    std::map<std::wstring, std::size_t> byName_;
    std::size_t current_ = 0;
    bool inSection_ = false;
};

} // namespace reading
