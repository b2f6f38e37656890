// Names of sections and keys, and the file's encoding.
#include "rules/families.h"
#include "rules/near_name.h"
#include "rules/settings/known_settings.h"

#include <algorithm>

namespace rules {

namespace {

using reading::Encoding;
using reading::IniEntry;
using reading::IniSection;

Place At(std::size_t line) {
    return {L"Setup.ini", line};
}

void CheckSectionName(const IniSection& section, const SectionName& name, Findings& findings) {
    const TextList known = KnownSections();
    if (!ListHolds(known, name.Base)) {
        findings.push_back({RuleId::UnknownSection, At(section.Line),
                            L"[" + section.Name + L"]" + DidYouMean(name.Base, known)});
    } else if (!name.IsLookedUp) {
        findings.push_back({RuleId::UnknownDecoration, At(section.Line),
                            L"[" + section.Name + L"] is never looked up"});
    }
}

// "OPER0": one digit, or a leading zero too many.
bool IsMisnumbered(std::wstring_view key) {
    const std::wstring upper = UpperCase(key);
    return upper.starts_with(L"OPER") && upper.size() > 4 &&
           upper.find_first_not_of(L"0123456789", 4) == std::wstring::npos && !OperationNumber(key);
}

void CheckKeyName(const SectionName& section, const IniEntry& entry, Findings& findings) {
    if (FindKnownKey(section.Base, entry.Key)) {
        return;
    }
    if (IsScriptSection(section.Base) && IsMisnumbered(entry.Key)) {
        findings.push_back({RuleId::OperNumberForm, At(entry.Line),
                            entry.Key + L" is never read; two digits are: OPER00, OPER01"});
        return;
    }
    findings.push_back({RuleId::UnknownKey, At(entry.Line),
                        entry.Key + L" in [" + section.Base + L"]" +
                            DidYouMean(entry.Key, KnownKeys(section.Base))});
}

void CheckTwice(const IniSection& section, Findings& findings) {
    for (const IniEntry& entry : section.Entries) {
        const IniEntry* const first = section.Find(entry.Key);
        if (first != &entry && !entry.Key.empty()) {
            findings.push_back(
                {RuleId::KeyTwice, At(entry.Line),
                 entry.Key + L" stands in line " + std::to_wstring(first->Line) + L" already"});
        }
    }
}

void CheckEncoding(const reading::TextFile& file, Findings& findings) {
    switch (file.How) {
    case Encoding::Utf8Mark:
    case Encoding::Utf16Big:
    case Encoding::Utf16NoMark:
        findings.push_back(
            {RuleId::IniEncoding, At(0), L"the file is " + std::wstring(NameOf(file.How))});
        break;
    case Encoding::Utf8:
        findings.push_back({RuleId::IniLetters, At(0), L"the file is UTF-8 without a mark"});
        break;
    default:
        break;
    }
}

} // namespace

void CheckNames(const Packet& packet, Findings& findings) {
    CheckEncoding(packet.Settings.File, findings);
    for (const IniSection& section : packet.Settings.Sections) {
        const SectionName name = TakeApart(section.Name);
        CheckSectionName(section, name, findings);
        const IniSection* const first = packet.Settings.Find(section.Name);
        if (first != &section) {
            findings.push_back({RuleId::SectionTwice, At(section.Line),
                                L"[" + section.Name + L"] begins in line " +
                                    std::to_wstring(first->Line) + L" already"});
        }
        CheckTwice(section, findings);
        if (ListHolds(KnownSections(), name.Base)) {
            for (const IniEntry& entry : section.Entries) {
                CheckKeyName(name, entry, findings);
            }
        }
    }
}

} // namespace rules
