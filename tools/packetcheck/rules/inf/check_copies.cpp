// Copy sections and the folders that they copy to.
#include "rules/families.h"
#include "rules/inf/models_text.h"

#include <algorithm>

namespace rules {

namespace {

using reading::InfEntry;
using reading::InfSection;
using reading::InfText;

std::wstring Value(const InfEntry& entry, std::size_t index) {
    return index < entry.Values.size() ? entry.Values[index] : std::wstring();
}

// The copy sections of the install sections that Windows may take.
TextList AllCopySections(const InfText& inf) {
    TextList sections;
    for (const std::wstring& install : InstallSectionsOf(ModelsOf(inf))) {
        for (const std::wstring_view decoration : {L"NTamd64", L"NT", L""}) {
            for (const InfEntry* entry :
                 inf.Entries(Decorated(install, decoration), L"CopyFiles")) {
                for (const std::wstring& value : entry->Values) {
                    if (!value.starts_with(L"@") && inf.Find(value) != nullptr) {
                        AppendDistinct(sections, value);
                    }
                }
            }
        }
    }
    return sections;
}

// The entry of [DestinationDirs] that counts for a copy section; null when there is none.
const InfEntry* DestinationOf(const InfText& inf, const std::wstring& section) {
    auto entries = inf.Entries(L"DestinationDirs", section);
    if (entries.empty()) {
        entries = inf.Entries(L"DestinationDirs", L"DefaultDestDir");
    }
    return entries.empty() ? nullptr : entries.front();
}

void CheckFolder(const PacketInf& inf, const InfEntry& entry, Findings& findings) {
    const std::wstring number = Value(entry, 0);
    const std::wstring subfolder = Value(entry, 1);
    const Place place{inf.Shown, entry.Line};
    if (number.empty()) {
        findings.push_back({RuleId::DestinationEmpty, place, entry.Key + L" has no value"});
    } else if (number == L"10" && entry.Values.size() < 2) {
        findings.push_back(
            {RuleId::Destination10Alone, place, entry.Key + L" = 10 has no subfolder"});
    } else if (number == L"13") {
        findings.push_back(
            {RuleId::DestinationDriverStore, place, entry.Key + L" = 13 is the driver store"});
    } else if (number != L"10" && number != L"11" && number != L"12") {
        findings.push_back({RuleId::DestinationUnknown, place,
                            entry.Key + L" = " + number + L" is not known to the cleanup"});
    } else if (number != L"10" && !subfolder.empty()) {
        findings.push_back(
            {RuleId::DestinationSubfolder, place,
             entry.Key + L" = " + number + L"," + subfolder + L": the subfolder is ignored"});
    }
}

// The first line of a section beyond the number of copy sections.
void CheckLength(const PacketInf& inf, const std::wstring& name, std::size_t most,
                 Findings& findings) {
    const InfSection* const section = inf.Text.Find(name);
    if (section == nullptr || section->Entries.size() <= most) {
        return;
    }
    findings.push_back({RuleId::CopyLinesExceedSections,
                        {inf.Shown, section->Entries[most].Line},
                        L"[" + name + L"] has " + std::to_wstring(section->Entries.size()) +
                            L" lines, and the INF has " + std::to_wstring(most) +
                            L" copy sections"});
}

void CheckNamesInSection(const PacketInf& inf, const std::wstring& name, Findings& findings) {
    for (const InfEntry& entry : inf.Text.Find(name)->Entries) {
        if (Value(entry, 0).empty()) {
            findings.push_back({RuleId::CopyLineWithoutName,
                                {inf.Shown, entry.Line},
                                L"a line of [" + name + L"] names no file"});
        }
    }
}

} // namespace

void CheckCopyLists(const PacketInf& inf, Findings& findings) {
    const TextList read =
        CopySectionsOf(inf.Text, InstallSectionsOf(ModelsOf(inf.Text), ReadBy::Program));
    for (const std::wstring& name : read) {
        if (inf.Text.Find(name) == nullptr) {
            continue;
        }
        CheckNamesInSection(inf, name, findings);
        if (inf.FilesEndProcess) {
            CheckLength(inf, name, read.size(), findings);
        }
    }
    for (const CopiedFile& file : inf.Files) {
        if (!EqualIgnoringCase(file.CleanupFolder, file.OwnFolder)) {
            findings.push_back({RuleId::CleanupInWrongFolder,
                                {inf.Shown, file.Line},
                                file.Name + L" is copied to " + file.OwnFolder +
                                    L", and the cleanup looks in " + file.CleanupFolder});
        }
    }
}

void CheckDestinations(const PacketInf& inf, Findings& findings) {
    for (const std::wstring& section : AllCopySections(inf.Text)) {
        const InfEntry* const entry = DestinationOf(inf.Text, section);
        if (entry != nullptr) {
            CheckFolder(inf, *entry, findings);
        } else {
            findings.push_back({RuleId::DestinationMissing,
                                {inf.Shown, inf.Text.Find(section)->Line},
                                L"no folder is given for [" + section + L"]"});
        }
    }
}

} // namespace rules
