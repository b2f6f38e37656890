#include "rules/inf/models_text.h"

#include "inf/decorations.h"

#include <algorithm>

namespace rules {

namespace {

using reading::InfEntry;
using reading::InfSection;
using reading::InfText;

constexpr std::uint16_t Amd64 = 9;

Reader ReaderOf(std::wstring_view decoration) {
    if (DecorationApplies(decoration, Amd64)) {
        return Reader::Program;
    }
    const std::wstring upper = UpperCase(decoration);
    if (Contains(upper, L"$")) {
        return Reader::Unstamped;
    }
    const bool isVersioned = upper.starts_with(L"NTAMD64.") || upper.starts_with(L"NT.");
    return isVersioned ? Reader::WindowsOnly : Reader::Nobody;
}

// A line without an equals sign has its key and first value in one.
std::wstring FirstValue(const InfEntry& entry) {
    return entry.Values.empty() ? std::wstring() : entry.Values.front();
}

void AddSection(const InfText& inf, const std::wstring& models, const std::wstring& decoration,
                Reader by, std::vector<ModelsLine>& lines) {
    const InfSection* const section = inf.Find(Decorated(models, decoration));
    if (section == nullptr) {
        return;
    }
    for (const InfEntry& entry : section->Entries) {
        ModelsLine line{models, decoration, by, entry.Line, entry.Key, FirstValue(entry), {}};
        if (entry.Values.size() > 1) {
            line.Ids.assign(entry.Values.begin() + 1, entry.Values.end());
        }
        lines.push_back(std::move(line));
    }
}

} // namespace

std::wstring Decorated(std::wstring_view section, std::wstring_view decoration) {
    return decoration.empty() ? std::wstring(section)
                              : std::wstring(section).append(L".").append(decoration);
}

std::vector<ModelsLine> ModelsOf(const InfText& inf) {
    std::vector<ModelsLine> lines;
    const InfSection* const manufacturers = inf.Find(L"Manufacturer");
    if (manufacturers == nullptr) {
        return lines;
    }
    for (const InfEntry& entry : manufacturers->Entries) {
        const std::wstring models = FirstValue(entry);
        AddSection(inf, models, L"", Reader::Program, lines);
        for (std::size_t index = 1; index < entry.Values.size(); ++index) {
            const std::wstring& decoration = entry.Values[index];
            AddSection(inf, models, decoration, ReaderOf(decoration), lines);
        }
    }
    return lines;
}

std::size_t LineOfId(const std::vector<ModelsLine>& models, std::wstring_view id) {
    const auto found = std::find_if(models.begin(), models.end(), [id](const ModelsLine& line) {
        return line.By == Reader::Program && ListHolds(line.Ids, id);
    });
    return found == models.end() ? 0 : found->Line;
}

TextList InstallSectionsOf(const std::vector<ModelsLine>& models, ReadBy reader) {
    TextList sections;
    for (const ModelsLine& line : models) {
        const bool isRead = line.By == Reader::Program ||
                            (reader == ReadBy::Windows && line.By == Reader::WindowsOnly);
        if (isRead && !line.Install.empty()) {
            AppendDistinct(sections, line.Install);
        }
    }
    return sections;
}

TextList CopySectionsOf(const InfText& inf, const TextList& installSections) {
    TextList copies;
    for (const std::wstring& install : installSections) {
        for (const std::wstring_view decoration : KnownDecorations) {
            if (!DecorationApplies(decoration, Amd64)) {
                continue;
            }
            // With the empty decoration the program looks for the name with a final dot.
            const std::wstring name = std::wstring(install).append(L".").append(decoration);
            for (const InfEntry* entry : inf.Entries(name, L"CopyFiles")) {
                for (const std::wstring& value : entry->Values) {
                    AppendDistinct(copies, value);
                }
            }
        }
    }
    return copies;
}

} // namespace rules
