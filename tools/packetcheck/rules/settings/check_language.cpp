// Lang.ini.
#include "rules/families.h"
#include "rules/near_name.h"
#include "rules/setting_lookup.h"

#include <algorithm>

namespace rules {

namespace {

using reading::Encoding;
using reading::IniEntry;
using reading::IniSection;

const TextList& Texts() {
    static const TextList keys = {
        L"STR_PREPARE",      L"STR_INSTALL",           L"STR_UNINSTALL",     L"STR_INSTALL_SUCCESS",
        L"STR_INSTALL_FAIL", L"STR_UNINSTALL_SUCCESS", L"STR_UNINSTALL_FAIL"};
    return keys;
}

Place At(std::size_t line) {
    return {L"Lang.ini", line};
}

// Letters of East Asian scripts are about twice as wide as Latin ones.
std::size_t WidthOf(std::wstring_view text) {
    constexpr wchar_t FirstWide = 0x2E80;
    constexpr wchar_t LastWide = 0xD7A3;
    std::size_t width = 0;
    for (const wchar_t letter : text) {
        width += letter >= FirstWide && letter <= LastWide ? 2 : 1;
    }
    return width;
}

void CheckSection(const IniSection& section, Findings& findings) {
    // Two lines of about forty Latin letters; the second one is not quite as long, since words stay
    // whole.
    constexpr std::size_t Widest = 76;
    for (const std::wstring& key : Texts()) {
        const IniEntry* const entry = section.Find(key);
        if (entry == nullptr || entry->Value.empty()) {
            findings.push_back({RuleId::LanguageTextMissing, At(section.Line),
                                L"[" + section.Name + L"] has no " + key});
        } else if (WidthOf(entry->Value) > Widest) {
            findings.push_back(
                {RuleId::LanguageTextLong, At(entry->Line),
                 key + L" has " + std::to_wstring(entry->Value.size()) + L" letters"});
        }
    }
    for (const IniEntry& entry : section.Entries) {
        if (!ListHolds(Texts(), entry.Key)) {
            findings.push_back({RuleId::LanguageTextUnknown, At(entry.Line),
                                entry.Key + DidYouMean(entry.Key, Texts())});
        }
    }
}

bool NeedsWindow(const Packet& packet) {
    return std::any_of(packet.Generations.begin(), packet.Generations.end(),
                       [&packet](const PacketGeneration& generation) {
                           return SettingLookup(packet, generation.For).Number(L"UI", L"NEEDUI") !=
                                  0;
                       });
}

bool IsReadWrong(Encoding encoding) {
    return encoding != Encoding::Ascii && encoding != Encoding::Utf16;
}

} // namespace

void CheckLanguage(const Packet& packet, Findings& findings) {
    const reading::IniText& language = packet.Language;
    if (!language.File.Exists()) {
        if (NeedsWindow(packet)) {
            findings.push_back({RuleId::LanguageFileMissing, At(0), L"there is no Lang.ini"});
        }
        return;
    }
    if (IsReadWrong(language.File.How)) {
        findings.push_back({RuleId::LanguageEncoding, At(0),
                            L"the file is " + std::wstring(NameOf(language.File.How))});
    }
    if (language.Find(L"EN") == nullptr) {
        findings.push_back({RuleId::LanguageEnglishMissing, At(0), L"there is no section [EN]"});
    }
    for (const IniSection& section : language.Sections) {
        CheckSection(section, findings);
    }
}

} // namespace rules
