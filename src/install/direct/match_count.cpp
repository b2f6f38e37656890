#include "install/direct/match_count.h"

#include "common/limits.h"
#include "install/devices/device_ids.h"

#include <algorithm>

std::wstring BaseIdOf(std::wstring_view deviceId) {
    const std::wstring id = UpperCase(Cut(deviceId, DeviceIdCapacity));
    return Contains(id, InterfaceMark) ? BeforeLast(id, L'&') : id;
}

std::size_t ExpectedMatches(const TextList& packetIds, std::wstring_view deviceId) {
    const std::wstring base = BaseIdOf(deviceId);
    return static_cast<std::size_t>(std::ranges::count_if(
        packetIds, [&base](const std::wstring& id) { return BaseIdOf(id) == base; }));
}
