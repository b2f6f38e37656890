#include "install/direct/inf_priority.h"

#include "inf/driver_files.h"
#include "install/direct/class_rank.h"

#include <algorithm>

namespace {

std::uint32_t RankOfInf(const std::wstring& infPath) {
    std::wstring className;
    return GetInfClassName(infPath, className) ? RankOfClass(className) : RankOfUnreadableClass;
}

bool GoesBefore(const std::wstring& left, const std::wstring& right) {
    return RankOfInf(left) < RankOfInf(right);
}

} // namespace

bool GetInfSetWithPriority(InfSet& infs) {
    infs.clear();
    if (!ListPacketInfs(
            infs, L"GetInfSetWithPriority: Get driver packet %s inf set fail,error code 0x%08X")) {
        return false;
    }
    // Each INF is inserted behind those of its rank. Every comparison reads both INF files, so
    // there are few of them; and a file that changes between two readings can spoil the order, but
    // never lead out of the list, as it could with the library's sort.
    for (auto inf = infs.begin(); inf != infs.end(); ++inf) {
        std::rotate(std::upper_bound(infs.begin(), inf, *inf, GoesBefore), inf, inf + 1);
    }
    return true;
}
