#include "install/devices/device_ids.h"

#include "common/limits.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::wstring_view InterfaceMark = L"&MI_";

} // namespace

std::wstring DeviceIdOf(std::wstring_view instanceId) {
    return BeforeLast(instanceId, L'\\');
}

std::wstring BaseIdOf(std::wstring_view deviceId) {
    const std::wstring id = UpperCase(Cut(deviceId, DeviceIdCapacity));
    return Contains(id, InterfaceMark) ? BeforeLast(id, L'&') : id;
}

std::size_t ExpectedMatches(const TextList& packetIds, std::wstring_view deviceId) {
    const std::wstring base = BaseIdOf(deviceId);
    return static_cast<std::size_t>(
        std::count_if(packetIds.begin(), packetIds.end(),
                      [&base](const std::wstring& id) { return BaseIdOf(id) == base; }));
}

CompositeIds CompositeIdsOf(const TextList& hardwareIds) {
    CompositeIds result;
    for (const std::wstring& hardwareId : hardwareIds) {
        const std::wstring id = UpperCase(Cut(hardwareId, DeviceIdCapacity));
        const std::size_t mark = id.find(InterfaceMark);
        if (mark != std::wstring::npos) {
            AppendDistinct(result.Ids, id.substr(0, mark));
            continue;
        }
        result.ExactMatchFound = true;
        if (!ListHolds(result.Ids, id)) {
            result.Ids.insert(result.Ids.begin(), id);
        }
    }
    return result;
}

bool MatchesShiftDevice(std::wstring_view hardwareId, std::wstring_view configured) {
    const std::wstring id = UpperCase(hardwareId);
    return std::wstring_view(id).substr(0, id.find(L"&REV_")) == UpperCase(configured);
}

std::uint32_t RankOfClass(std::wstring_view className) {
    static constexpr std::array<std::pair<std::wstring_view, std::uint32_t>, 5> Ranks{
        {{L"PORTS", 1}, {L"MODEM", 2}, {L"NET", 3}, {L"MEDIA", 4}, {L"", 5}}};
    const auto* const rank = std::find_if(Ranks.begin(), Ranks.end(), [className](const auto& row) {
        return row.first == className;
    });
    return rank == Ranks.end() ? 0 : rank->second;
}
