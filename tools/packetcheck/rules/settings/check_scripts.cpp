// Script sections: how many lines run, and when.
#include "rules/families.h"
#include "rules/settings/known_settings.h"

#include "config/section_candidates.h"

#include <algorithm>
#include <array>

namespace rules {

namespace {

using reading::IniEntry;
using reading::IniSection;

struct OperationLine {
    const IniEntry* Entry;
    int Number;
};

std::vector<OperationLine> LinesOf(const IniSection& section) {
    std::vector<OperationLine> lines;
    for (const IniEntry& entry : section.Entries) {
        if (const auto number = OperationNumber(entry.Key); number && !entry.Value.empty()) {
            lines.push_back({&entry, *number});
        }
    }
    return lines;
}

// Where keys of a section are looked up in each kind of run on each generation.
std::vector<TextList> AllLookups(std::wstring_view base) {
    std::vector<TextList> lookups;
    for (const wchar_t* mode : {L"INSTALL", L"UNINSTALL"}) {
        for (const wchar_t* os : {L"WIN10", L"WIN7", L"VISTA", L"WINXP", L""}) {
            lookups.push_back(SectionCandidates(base, mode, os, L"NTx64"));
        }
    }
    return lookups;
}

// OPERNUM as one kind of run sees it, 0 when no section has it.
std::int32_t CountSeen(const Packet& packet, const TextList& lookup) {
    for (const std::wstring& name : lookup) {
        const IniSection* const section = packet.Settings.Find(name);
        const IniEntry* const entry = section == nullptr ? nullptr : section->Find(L"OPERNUM");
        if (entry != nullptr && LeadingNumber(entry->Value) != -1) {
            return LeadingNumber(entry->Value);
        }
    }
    return 0;
}

// The largest OPERNUM of all kinds of run that look into this section.
std::int32_t LargestCount(const Packet& packet, const IniSection& section,
                          const std::wstring& base) {
    std::int32_t largest = 0;
    for (const TextList& lookup : AllLookups(base)) {
        if (ListHolds(lookup, section.Name)) {
            largest = std::max(largest, CountSeen(packet, lookup));
        }
    }
    return largest;
}

void CheckCount(const Packet& packet, const IniSection& section, const std::wstring& base,
                const std::vector<OperationLine>& lines, Findings& findings) {
    const std::int32_t count = LargestCount(packet, section, base);
    if (count <= 0) {
        findings.push_back({RuleId::OpernumMissing,
                            {L"Setup.ini", section.Line},
                            L"[" + section.Name + L"] has lines and no OPERNUM"});
        return;
    }
    int last = -1;
    for (const OperationLine& line : lines) {
        last = std::max(last, line.Number);
        if (line.Number >= count) {
            findings.push_back({RuleId::OpernumTooSmall,
                                {L"Setup.ini", line.Entry->Line},
                                line.Entry->Key + L" is beyond OPERNUM=" + std::to_wstring(count)});
        }
    }
    const IniEntry* const own = section.Find(L"OPERNUM");
    if (own != nullptr && LeadingNumber(own->Value) > last + 1) {
        findings.push_back({RuleId::OpernumTooLarge,
                            {L"Setup.ini", own->Line},
                            L"OPERNUM is " + std::to_wstring(LeadingNumber(own->Value)) +
                                L", and the last line is " + std::to_wstring(last)});
    }
}

} // namespace

void CheckScripts(const Packet& packet, Findings& findings) {
    for (const IniSection& section : packet.Settings.Sections) {
        const SectionName name = TakeApart(section.Name);
        const std::vector<OperationLine> lines = LinesOf(section);
        if (!IsScriptSection(name.Base) || !name.IsLookedUp || lines.empty() ||
            packet.Settings.Find(section.Name) != &section) {
            continue;
        }
        CheckCount(packet, section, name.Base, lines, findings);
        if (name.Mode.empty()) {
            findings.push_back({RuleId::ScriptSectionWithoutMode,
                                {L"Setup.ini", section.Line},
                                L"[" + section.Name + L"] runs in installs and uninstalls"});
        }
    }
}

} // namespace rules
