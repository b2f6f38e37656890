#include "plan/packet_facts.h"

#include "rehearsal/scene.h"

#include "config/driver_packet.h"
#include "inf/driver_files.h"
#include "inf/packet_ids.h"
#include "install/direct/class_rank.h"
#include "install/direct/inf_priority.h"
#include "install/direct/match_count.h"

#include <algorithm>

namespace plan {

namespace {

Inf ReadInf(const std::wstring& path) {
    Inf inf;
    inf.Name = AfterLast(path, L'\\');
    inf.Readable = GetInfClassName(path, inf.ClassName) && GetDeviceIDFromInf(path, inf.Ids);
    inf.Rank = inf.Readable ? RankOfClass(inf.ClassName) : RankOfUnreadableClass;
    return inf;
}

// The IDs as the matching collects them: those of one INF after the other, an ID of two INFs twice.
TextList IdsInListingOrder(const TextList& staging, const std::vector<Inf>& infs) {
    TextList ids;
    for (const std::wstring& name : staging) {
        const auto inf = std::find_if(infs.begin(), infs.end(),
                                      [&name](const Inf& known) { return known.Name == name; });
        if (inf != infs.end()) {
            ids.insert(ids.end(), inf->Ids.begin(), inf->Ids.end());
        }
    }
    return ids;
}

std::vector<Pair> PairsOf(const TextList& ids) {
    std::vector<Pair> pairs;
    TextList seen;
    for (const std::wstring& id : ids) {
        if (ListHolds(seen, id)) {
            continue;
        }
        seen.push_back(id);
        std::wstring inf;
        if (GetDeviceIDInDriverPacket(id, inf)) {
            pairs.push_back({id, AfterLast(inf, L'\\')});
        }
    }
    return pairs;
}

std::vector<Expected> CountsOf(const TextList& ids) {
    std::vector<Expected> counts;
    TextList counted;
    for (const std::wstring& id : ids) {
        const std::wstring base = BaseIdOf(id);
        auto entry = std::find_if(counts.begin(), counts.end(),
                                  [&base](const Expected& known) { return known.BaseId == base; });
        if (entry == counts.end()) {
            counts.push_back({base, ExpectedMatches(ids, id), 0});
            entry = counts.end() - 1;
        }
        if (rehearsal::CanBeDeviceId(id) && !ListHolds(counted, id)) {
            counted.push_back(id);
            ++entry->Possible;
        }
    }
    return counts;
}

} // namespace

void AddPacketFacts(Plan& result) {
    TextList listing;
    FindDriverPacketFiles(GetDriverDir(), L"*.INF", listing);
    for (const std::wstring& path : listing) {
        result.Staging.push_back(AfterLast(path, L'\\'));
    }
    try {
        TextList ordered;
        GetInfSetWithPriority(ordered);
        for (const std::wstring& path : ordered) {
            result.Infs.push_back(ReadInf(path));
        }
    } catch (const rehearsal::ProcessEnded&) {
        // A class without a value: the run ends before it orders anything, and says so itself.
        return;
    }
    const TextList ids = IdsInListingOrder(result.Staging, result.Infs);
    result.Pairs = PairsOf(ids);
    result.ExpectedCounts = CountsOf(ids);
}

} // namespace plan
