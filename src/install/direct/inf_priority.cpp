#include "install/direct/inf_priority.h"

#include "config/driver_packet.h"
#include "inf/driver_files.h"
#include "install/devices/device_ids.h"
#include "platform/platform.h"

#include <algorithm>
#include <utility>

namespace {

std::uint32_t RankOfInf(const std::wstring& infPath) {
    std::wstring className;
    return GetInfClassName(infPath, className) ? RankOfClass(className) : RankOfUnreadableClass;
}

} // namespace

bool GetInfSetWithPriority(TextList& infSet) {
    infSet.clear();
    const std::wstring folder = GetDriverDir();
    if (!FindDriverPacketFiles(folder, L"*.INF", infSet) || infSet.empty()) {
        WriteLog(L"GetInfSetWithPriority: Get driver packet %s inf set fail,error code 0x%08X",
                 folder.c_str(), GetLastError());
        return false;
    }
    std::vector<std::pair<std::uint32_t, std::wstring>> ranked;
    ranked.reserve(infSet.size());
    for (std::wstring& inf : infSet) {
        const std::uint32_t rank = RankOfInf(inf);
        ranked.emplace_back(rank, std::move(inf));
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    std::transform(ranked.begin(), ranked.end(), infSet.begin(),
                   [](auto& entry) { return std::move(entry.second); });
    return true;
}
