// Settings that must go together, on each generation of Windows.
#include "rules/families.h"
#include "rules/setting_lookup.h"

#include "common/limits.h"
#include "config/comma_fields.h"
#include "config/operation_variables.h"

#include <algorithm>

namespace rules {

namespace {

std::wstring OnWindows(const Generation& generation) {
    return L" (" + generation.Name + L")";
}

void CheckMode(const SettingLookup& settings, const PacketGeneration& generation,
               Findings& findings) {
    const std::int32_t mode = settings.Number(L"INSTALL", L"MODE");
    const std::wstring where = OnWindows(generation.For);
    if (mode < 0 || mode > 2) {
        findings.push_back({RuleId::ModeUnknown, settings.Where(L"INSTALL", L"MODE"),
                            L"MODE is " + std::to_wstring(mode) + where});
    }
    if ((mode == 0 || mode == 2) && settings.Number(L"INSTALL", L"COPYOEMTIMEOUT") == 0) {
        findings.push_back(
            {RuleId::StagingWithoutTimeLimit, settings.Where(L"INSTALL", L"MODE"),
             L"MODE is " + std::to_wstring(mode) + L" and COPYOEMTIMEOUT is not set" + where});
    }
    if ((mode == 1 || mode == 2) && settings.Number(L"ENUM", L"MAXCYCLE") <= 0) {
        findings.push_back(
            {RuleId::MatchingWithoutLimit, settings.Where(L"INSTALL", L"MODE"),
             L"MODE is " + std::to_wstring(mode) + L" and MAXCYCLE is not set" + where});
    }
}

std::size_t MostFunctions(const PacketGeneration& generation) {
    std::size_t most = 0;
    for (const plan::Expected& expected : generation.Install.ExpectedCounts) {
        most = std::max(most, expected.Possible);
    }
    return most;
}

void CheckMatchMode(const SettingLookup& settings, const PacketGeneration& generation,
                    Findings& findings) {
    const std::int32_t wanted = settings.Number(L"USERSETTING", L"MATCHMODE");
    const auto possible = static_cast<std::int32_t>(MostFunctions(generation));
    if (wanted > possible && possible != 0) {
        findings.push_back({RuleId::MatchmodeNeverReached,
                            settings.Where(L"USERSETTING", L"MATCHMODE"),
                            L"MATCHMODE is " + std::to_wstring(wanted) + L", and at most " +
                                std::to_wstring(possible) + L" functions of a device arrive" +
                                OnWindows(generation.For)});
    }
}

void CheckComposite(const SettingLookup& settings, Findings& findings) {
    if (settings.IsOn(L"USERSETTING", L"NEEDCOMPOSITEDEAL")) {
        return;
    }
    for (const wchar_t* key : {L"LOADSERIAL", L"LOADUSBCCGP"}) {
        if (settings.IsOn(L"USERSETTING", key)) {
            findings.push_back({RuleId::CompositeSwitchWithoutEffect,
                                settings.Where(L"USERSETTING", key),
                                std::wstring(key) + L" is on and NEEDCOMPOSITEDEAL is off"});
        }
    }
}

void CheckDuration(const SettingLookup& settings, const PacketGeneration& generation,
                   Findings& findings) {
    constexpr std::uint64_t LongRun = 15 * 60;
    const std::optional<std::uint64_t>& seconds = generation.Install.WorstCaseSeconds;
    if (seconds && *seconds > LongRun) {
        findings.push_back({RuleId::LongRun, settings.Where(L"INSTALL", L"MODE"),
                            L"an install may take " + std::to_wstring(*seconds / 60) +
                                L" minutes, without the time that Windows needs" +
                                OnWindows(generation.For)});
    }
}

// A request that reads a value: opcode 3, all fixed fields, and a parameter.
bool IsQuery(const std::wstring& request) {
    TextList fields;
    SplitByComma(request, fields);
    return fields.size() > RegeditFixedFields && LeadingNumber(fields.front()) == 3;
}

void CheckLocations(const SettingLookup& settings, Findings& findings) {
    for (const wchar_t* section : {L"USERLANG", L"DEVICEID"}) {
        const std::wstring request = settings.Text(section, L"LOCATION", PathCapacity);
        if (!request.empty() && !IsQuery(request)) {
            findings.push_back({RuleId::LocationForm, settings.Where(section, L"LOCATION"),
                                L"LOCATION=" + request});
        }
    }
}

} // namespace

void CheckSettings(const Packet& packet, Findings& findings) {
    for (const PacketGeneration& generation : packet.Generations) {
        const SettingLookup install(packet, generation.For);
        if (packet.Settings.File.Exists()) {
            CheckMode(install, generation, findings);
        }
        CheckMatchMode(install, generation, findings);
        CheckComposite(install, findings);
        CheckDuration(install, generation, findings);
        CheckLocations(install, findings);
        CheckLocations(SettingLookup(packet, generation.For, false), findings);
    }
}

} // namespace rules
