// Each value of Setup.ini by itself.
#include "rules/families.h"
#include "rules/settings/known_settings.h"

#include <algorithm>

namespace rules {

namespace {

using reading::IniEntry;
using reading::IniSection;

Place At(const IniEntry& entry) {
    return {L"Setup.ini", entry.Line};
}

std::wstring Shown(const IniEntry& entry) {
    return entry.Key + L"=" + entry.Value;
}

// What stands behind the number at the start.
std::wstring_view BehindNumber(std::wstring_view value) {
    const std::size_t sign = value.starts_with(L'-') || value.starts_with(L'+') ? 1 : 0;
    const std::size_t end = value.find_first_not_of(L"0123456789", sign);
    return end == std::wstring_view::npos ? std::wstring_view() : value.substr(end);
}

bool BeginsWithNumber(std::wstring_view value) {
    return BehindNumber(value).size() < value.size() && value != L"-" && value != L"+";
}

bool HasComment(std::wstring_view value) {
    const std::size_t mark = value.find(L';');
    return mark != std::wstring_view::npos && mark > 0 &&
           (value[mark - 1] == L' ' || value[mark - 1] == L'\t');
}

void CheckTime(const IniEntry& entry, std::int32_t number, Findings& findings) {
    constexpr std::int32_t LongWait = 600;
    if (number > LongWait && number % 1000 == 0) {
        findings.push_back({RuleId::TimeInMilliseconds, At(entry),
                            Shown(entry) + L" is " + std::to_wstring(number / 60) + L" minutes"});
    }
}

void CheckNumber(const IniEntry& entry, ValueKind kind, Findings& findings) {
    const std::int32_t number = LeadingNumber(entry.Value);
    if (!BeginsWithNumber(entry.Value)) {
        findings.push_back({RuleId::NotANumber, At(entry), Shown(entry) + L" reads as 0"});
        return;
    }
    if (!BehindNumber(entry.Value).empty()) {
        findings.push_back(
            {HasComment(entry.Value) ? RuleId::CommentBehindValue : RuleId::NumberEndsEarly,
             At(entry), Shown(entry) + L" reads as " + std::to_wstring(number)});
    }
    // -1 leaves the word to another section.
    if (number < -1) {
        findings.push_back({RuleId::NegativeNumber, At(entry), Shown(entry)});
    }
    if (kind == ValueKind::Seconds) {
        CheckTime(entry, number, findings);
    }
    if (kind == ValueKind::Switch && number != 0 && number % 256 == 0) {
        findings.push_back({RuleId::SwitchOffByLowByte, At(entry), Shown(entry) + L" is off"});
    }
}

void CheckText(const IniEntry& entry, const KnownKey& known, Findings& findings) {
    if (entry.Value.size() > known.Longest) {
        findings.push_back({RuleId::ValueCut, At(entry),
                            entry.Key + L" has " + std::to_wstring(entry.Value.size()) +
                                L" characters, " + std::to_wstring(known.Longest) + L" are read"});
    }
    if (HasComment(entry.Value)) {
        findings.push_back({RuleId::CommentBehindValue, At(entry), Shown(entry)});
    }
}

// True when a section that is looked up later has a value for the key.
bool IsSetInPlainerSection(const Packet& packet, const SectionName& special, const IniSection& own,
                           const IniEntry& entry) {
    return std::any_of(packet.Settings.Sections.begin(), packet.Settings.Sections.end(),
                       [&](const IniSection& section) {
                           const SectionName name = TakeApart(section.Name);
                           const IniEntry* const other = section.Find(entry.Key);
                           return &section != &own && other != nullptr &&
                                  EqualIgnoringCase(name.Base, special.Base) &&
                                  section.Name.size() < own.Name.size() && !other->Value.empty() &&
                                  other->Value != L"-1";
                       });
}

} // namespace

void CheckValues(const Packet& packet, Findings& findings) {
    for (const IniSection& section : packet.Settings.Sections) {
        const SectionName name = TakeApart(section.Name);
        for (const IniEntry& entry : section.Entries) {
            const std::optional<KnownKey> known = FindKnownKey(name.Base, entry.Key);
            if (!known || section.Find(entry.Key) != &entry) {
                continue;
            }
            const bool isText = known->Kind == ValueKind::Text;
            if ((isText ? entry.Value.empty() : entry.Value == L"-1") &&
                IsSetInPlainerSection(packet, name, section, entry)) {
                findings.push_back({RuleId::ValueFallsThrough, At(entry),
                                    Shown(entry) + L" leaves the word to another section"});
            } else if (isText) {
                CheckText(entry, *known, findings);
            } else {
                CheckNumber(entry, known->Kind, findings);
            }
        }
    }
}

} // namespace rules
