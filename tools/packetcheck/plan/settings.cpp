#include "plan/settings.h"

#include "common/run_state.h"
#include "config/config_reader.h"

#include <algorithm>

namespace plan {

namespace {

using rehearsal::Deed;
using rehearsal::Event;

constexpr std::uint64_t ClosingPause = 2;

bool IsNumberedLine(std::wstring_view key) {
    return key.starts_with(L"OPER") && key != L"OPERNUM";
}

// As the run takes it: a negative number is a very long time.
std::uint64_t SecondsIn(const wchar_t* section, const wchar_t* key) {
    return Milliseconds(ReadConfigInt(section, key)) / 1000;
}

std::uint64_t StagingSeconds(std::size_t infs) {
    const std::uint64_t refresh = SecondsIn(L"ENUM", L"SCSIRSPTIMEOUT");
    const std::uint64_t settling = ReadConfigSwitch(L"INSTALL", L"WAITONREADY") ? refresh + 3 : 0;
    return infs * SecondsIn(L"INSTALL", L"COPYOEMTIMEOUT") + 2 * refresh + settling;
}

// The drive may take its time to answer a SCSI command.
std::uint64_t SwitchSeconds() {
    constexpr std::uint64_t LongestAnswer = 30;
    const bool isScsi = ReadConfigInt(L"SHIFTDEVICE", L"SHIFTMODE") != 1;
    return ReadConfigSwitch(L"SHIFTDEVICE", L"NEEDSHIFTDEVICE") && isScsi ? LongestAnswer : 0;
}

std::optional<std::uint64_t> DirectSeconds(std::size_t devices) {
    constexpr std::uint64_t TimeToAppear = 5;
    const std::int32_t lastCycle = ReadConfigInt(L"ENUM", L"MAXCYCLE");
    if (lastCycle <= 0) {
        return std::nullopt;
    }
    const auto retries = static_cast<std::uint64_t>(
        std::max<std::int32_t>(ReadConfigInt(L"INSTALL", L"RETRYCOUNT"), 0));
    return SwitchSeconds() + SecondsIn(L"ENUM", L"SCSIRSPTIMEOUT") + TimeToAppear +
           static_cast<std::uint64_t>(lastCycle - 1) * SecondsIn(L"ENUM", L"CYCLEINTERVAL") +
           devices * retries * SecondsIn(L"INSTALL", L"INTERVAL");
}

std::size_t MostDevices(const Plan& plan) {
    std::size_t most = 0;
    for (const Expected& expected : plan.ExpectedCounts) {
        most = std::max(most, expected.Possible);
    }
    return most;
}

} // namespace

std::vector<Setting> SettingsOf(const std::vector<Event>& events) {
    std::vector<Setting> settings;
    for (const Event& event : events) {
        if (event.What != Deed::SettingRead || IsNumberedLine(event.Subject)) {
            continue;
        }
        const bool known =
            std::any_of(settings.begin(), settings.end(), [&event](const Setting& setting) {
                return setting.Section == event.Object && setting.Key == event.Subject;
            });
        if (!known) {
            settings.push_back({event.Object, event.Subject, event.Text, event.Source});
        }
    }
    return settings;
}

std::optional<std::uint64_t> WorstCaseSeconds(const Plan& plan) {
    SetupMode = plan.IsInstall ? 1 : 0;
    if (!plan.IsInstall || plan.Mode < 0 || plan.Mode > 2) {
        return ClosingPause;
    }
    const std::uint64_t staging = plan.Mode == 1 ? 0 : StagingSeconds(plan.Staging.size());
    if (plan.Mode == 0) {
        return staging + ClosingPause;
    }
    const std::optional<std::uint64_t> direct = DirectSeconds(MostDevices(plan));
    return direct ? std::optional(staging + *direct + ClosingPause) : std::nullopt;
}

} // namespace plan
