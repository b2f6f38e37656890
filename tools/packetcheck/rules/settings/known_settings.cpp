#include "rules/settings/known_settings.h"

#include "common/limits.h"

#include <algorithm>
#include <array>

namespace rules {

namespace {

constexpr std::size_t LongText = ConfigLineCapacity - 1;
constexpr std::size_t RequestText = PathCapacity - 1;

constexpr std::array<KnownKey, 28> Keys{{
    {L"INSTALL", L"MODE", ValueKind::Number},
    {L"INSTALL", L"WAITONREADY", ValueKind::Switch},
    {L"INSTALL", L"COPYOEMTIMEOUT", ValueKind::Seconds},
    {L"INSTALL", L"RETRYCOUNT", ValueKind::Number},
    {L"INSTALL", L"INTERVAL", ValueKind::Seconds},
    {L"ENUM", L"SCSIRSPTIMEOUT", ValueKind::Seconds},
    {L"ENUM", L"MAXCYCLE", ValueKind::Number},
    {L"ENUM", L"CYCLEINTERVAL", ValueKind::Seconds},
    {L"ENUM", L"FIRST_ARRIVE", ValueKind::Seconds},
    {L"USERSETTING", L"MATCHMODE", ValueKind::Number},
    {L"USERSETTING", L"NEEDCOMPOSITEDEAL", ValueKind::Switch},
    {L"USERSETTING", L"LOADSERIAL", ValueKind::Switch},
    {L"USERSETTING", L"LOADUSBCCGP", ValueKind::Switch},
    {L"USERSETTING", L"USERKEY", ValueKind::Text, LongText},
    {L"SHIFTDEVICE", L"NEEDSHIFTDEVICE", ValueKind::Switch},
    {L"SHIFTDEVICE", L"SHIFTMODE", ValueKind::Number},
    {L"SHIFTDEVICE", L"SCSIDEVICE", ValueKind::Text, DeviceIdCapacity - 1},
    {L"SHIFTDEVICE", L"SCSICMD", ValueKind::Text, LongText},
    {L"UI", L"NEEDUI", ValueKind::Number},
    {L"USERLANG", L"LOCATION", ValueKind::Text, RequestText},
    {L"DEVICEID", L"LOCATION", ValueKind::Text, RequestText},
    {L"PROCESS", L"OPERNUM", ValueKind::Number},
    {L"PRE_REG_OPER", L"OPERNUM", ValueKind::Number},
    {L"PRE_FILE_OPER", L"OPERNUM", ValueKind::Number},
    {L"POST_REG_OPER", L"OPERNUM", ValueKind::Number},
    {L"POST_FILE_OPER", L"OPERNUM", ValueKind::Number},
    // Rows for any name, found by their section.
    {L"USER_ENV_PARA", L"", ValueKind::Text, LongText},
    {L"", L"", ValueKind::Text, LongText - 1},
}};

bool IsOneOf(std::wstring_view text, std::initializer_list<std::wstring_view> names) {
    return std::any_of(names.begin(), names.end(),
                       [text](std::wstring_view name) { return EqualIgnoringCase(text, name); });
}

TextList Parts(std::wstring_view section) {
    TextList parts;
    std::size_t dot = 0;
    while (dot != std::wstring_view::npos) {
        dot = section.find(L'.');
        parts.emplace_back(section.substr(0, dot));
        section.remove_prefix(dot == std::wstring_view::npos ? section.size() : dot + 1);
    }
    return parts;
}

} // namespace

std::optional<KnownKey> FindKnownKey(std::wstring_view section, std::wstring_view key) {
    if (EqualIgnoringCase(section, L"USER_ENV_PARA")) {
        return Keys[Keys.size() - 2];
    }
    if (IsScriptSection(section) && OperationNumber(key)) {
        return Keys.back();
    }
    const auto* const known = std::find_if(Keys.begin(), Keys.end(), [&](const KnownKey& row) {
        return EqualIgnoringCase(row.Section, section) && EqualIgnoringCase(row.Key, key);
    });
    return known == Keys.end() ? std::nullopt : std::optional(*known);
}

TextList KnownSections() {
    TextList names;
    for (const KnownKey& row : Keys) {
        if (!row.Section.empty()) {
            AppendDistinct(names, row.Section);
        }
    }
    return names;
}

TextList KnownKeys(std::wstring_view section) {
    TextList names;
    for (const KnownKey& row : Keys) {
        if (EqualIgnoringCase(row.Section, section) && !row.Key.empty()) {
            names.emplace_back(row.Key);
        }
    }
    return names;
}

SectionName TakeApart(std::wstring_view section) {
    const TextList parts = Parts(section);
    SectionName name{parts.front(), {}, {}, true};
    std::size_t next = 1;
    if (next < parts.size() && IsOneOf(parts[next], {L"INSTALL", L"UNINSTALL"})) {
        name.Mode = UpperCase(parts[next++]);
    }
    // The empty word belongs to a Windows that is not recognised.
    if (next < parts.size() && IsOneOf(parts[next], {L"WINXP", L"VISTA", L"WIN7", L"WIN10", L""})) {
        name.Generation = UpperCase(parts[next++]);
        if (next < parts.size() && EqualIgnoringCase(parts[next], L"NTx64")) {
            ++next;
        }
    }
    name.IsLookedUp = next == parts.size();
    return name;
}

bool IsScriptSection(std::wstring_view base) {
    return IsOneOf(
        base, {L"PROCESS", L"PRE_REG_OPER", L"PRE_FILE_OPER", L"POST_REG_OPER", L"POST_FILE_OPER"});
}

std::optional<int> OperationNumber(std::wstring_view key) {
    constexpr std::wstring_view Start = L"OPER";
    if (key.size() < Start.size() + 2 || key.size() > Start.size() + 5 ||
        !EqualIgnoringCase(key.substr(0, Start.size()), Start)) {
        return std::nullopt;
    }
    const std::wstring_view digits = key.substr(Start.size());
    const bool isNumber = digits.find_first_not_of(L"0123456789") == std::wstring_view::npos &&
                          (digits.size() == 2 || digits.front() != L'0');
    return isNumber ? std::optional(LeadingNumber(digits)) : std::nullopt;
}

} // namespace rules
