#include "install/direct/auto_match.h"

#include "config/config_reader.h"
#include "inf/packet_ids.h"
#include "install/composite/composite_setup.h"
#include "install/devices/device_ids.h"
#include "install/devices/device_nodes.h"
#include "install/devices/device_walk.h"
#include "install/direct/match_count.h"

namespace {

constexpr DWORD TimeToAppear = 5000; // milliseconds

struct MatchSettings {
    std::int32_t MatchMode = 0;
    std::int32_t MaxCycle = 0;
    std::int32_t CycleInterval = 0; // seconds
    std::int32_t FirstArrive = 0;   // seconds, only quoted in a log line
};

struct MatchState {
    std::uint32_t Cycle = 1;
    std::size_t PreviousCount = 0;
    bool FinalChanceTaken = false;
};

enum class Decision { Finished, Failed, NextCycle };

MatchSettings ReadSettings() {
    MatchSettings settings;
    settings.MatchMode = ReadConfigInt(L"USERSETTING", L"MATCHMODE");
    WriteLog(L"AutoDeviceMatch: User set match mode to %d", settings.MatchMode);
    settings.MaxCycle = ReadConfigInt(L"ENUM", L"MAXCYCLE");
    settings.CycleInterval = ReadConfigInt(L"ENUM", L"CYCLEINTERVAL");
    WriteLog(L"AutoDeviceMatch: Max match cycle is %d times, cycle interval is %d seconds",
             settings.MaxCycle, settings.CycleInterval);
    settings.FirstArrive = ReadConfigInt(L"ENUM", L"FIRST_ARRIVE");
    return settings;
}

// The hardware IDs of all INF files of the packet. An ID that two INF files list is there twice: it
// is then expected twice.
bool CollectPacketIds(DeviceIdList& ids) {
    InfSet infs;
    if (!ListPacketInfs(infs,
                        L"AutoDeviceMatch: Get driver packet %s inf set fail,error code 0x%08X")) {
        return false;
    }
    std::wstring unreadable;
    if (!CollectDeviceIds(infs, ids, unreadable)) {
        WriteLog(L"AutoDeviceMatch: Get device id from inf %s fail,error code 0x%08X",
                 unreadable.c_str(), GetLastError());
        return false;
    }
    return true;
}

// One look at the present devices: clears `matched` and collects the IDs of those that the packet
// lists.
bool CollectMatches(const DeviceIdList& packetIds, TextList& matched) {
    matched.clear();
    const DeviceInfoSetOwner set(
        SetupDiGetClassDevsW(nullptr, nullptr, nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES));
    if (!set) {
        WriteLog(L"AutoDeviceMatch: Get all present device fail,error code 0x%08X", GetLastError());
        return false;
    }
    DeviceWalk walk(set.Get());
    while (walk.Next()) {
        const std::optional<std::wstring> instanceId = ReadInstanceId(set.Get(), walk.Entry());
        if (!instanceId) {
            WriteLog(L"AutoDeviceMatch: Get device Instance id fail!,error code : 0X%08X",
                     GetLastError());
            return false;
        }
        std::wstring deviceId = DeviceIdOf(*instanceId);
        if (!instanceId->empty() && ListHolds(packetIds, deviceId)) {
            matched.push_back(std::move(deviceId));
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"AutoDeviceMatch: Enum device set info fail,error code 0x%08X", GetLastError());
        return false;
    }
    return true;
}

// What is tried before the last look: disables and enables the composite device. It is asked for
// without an ID, which no device has, so that devices of others stay on; what remains is the look
// itself.
bool TakeFinalChance() {
    WriteLog(L"AutoDeviceMatch: Max Cycle reached, device still not match complete,trying final "
             L"chance");
    if (!CompositeDeviceSetup(CompositeDisable, nullptr)) {
        WriteLog(L"AutoDeviceMatch: Disable composite device fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    if (!CompositeDeviceSetup(CompositeEnable, nullptr)) {
        WriteLog(L"AutoDeviceMatch: Enable composite device fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    return true;
}

bool IsFinished(const MatchSettings& settings, int expected, int count) {
    if (expected <= count) {
        WriteLog(L"AutoDeviceMatch: Auto device match finish,total %d devices matched", expected);
        return true;
    }
    if (settings.MatchMode != 0 && settings.MatchMode <= count) {
        WriteLog(L"AutoDeviceMatch: Auto device match finish,total %d devices matched",
                 settings.MatchMode);
        return true;
    }
    return false;
}

Decision Decide(const MatchSettings& settings, const DeviceIdList& packetIds,
                const TextList& matched, MatchState& state) {
    if (matched.empty()) {
        WriteLog(L"AutoDeviceMatch: No device matched in %d seconds", settings.FirstArrive);
        return Decision::Failed;
    }
    const auto expected = static_cast<int>(ExpectedMatches(packetIds, matched.front()));
    const auto count = static_cast<int>(matched.size());
    if (IsFinished(settings, expected, count)) {
        return Decision::Finished;
    }
    if (matched.size() < state.PreviousCount) {
        WriteLog(L"AutoDeviceMatch: Device missing,check device state");
        return Decision::Failed;
    }
    state.PreviousCount = matched.size();
    if (state.Cycle == static_cast<std::uint32_t>(settings.MaxCycle)) {
        if (state.FinalChanceTaken) {
            return Decision::Failed;
        }
        state.FinalChanceTaken = true;
        // The last look follows at once and counts as the same cycle.
        return TakeFinalChance() ? Decision::NextCycle : Decision::Failed;
    }
    WriteLog(L"AutoDeviceMatch: %d devices matched in match cycle %d,total %d device", count,
             state.Cycle, expected);
    ++state.Cycle;
    Sleep(Milliseconds(settings.CycleInterval));
    return Decision::NextCycle;
}

} // namespace

bool AutoDeviceMatch(TextList& matched) {
    WriteLog(L"AutoDeviceMatch: Auto matching device...");
    Sleep(TimeToAppear);
    matched.clear();
    const MatchSettings settings = ReadSettings();
    DeviceIdList packetIds;
    if (!CollectPacketIds(packetIds)) {
        return false;
    }
    MatchState state;
    Decision decision = Decision::NextCycle;
    while (decision == Decision::NextCycle) {
        if (!CollectMatches(packetIds, matched)) {
            return false;
        }
        decision = Decide(settings, packetIds, matched, state);
    }
    return decision == Decision::Finished;
}
