#include "conformance/deviations.h"

#include <algorithm>
#include <map>

namespace conformance {

namespace {

using Deviations = std::vector<Deviation>;

const Deviations OfMachine = {
    {"F14", "a switch of the machine: the documented answer unless told otherwise"},
    {"F35", "a switch of the machine: compatible drivers of any class unless told otherwise"},
    {"N23", "the profile files are read by Wine, which does not find it"},
};

// What Wine does instead, with the gap filler or without it. The program relies on none of these,
// or meets them on no machine of the lab.
const Deviations OfWine = {
    {"A05", "a set of all interfaces"},
    {"A06", "a set of all interfaces"},
    {"A07", "a set of the interfaces of that class"},
    {"A08", "a set of the interfaces of that class"},
    {"A34", "an empty set"},
    {"C03", "2"},
    {"C17", "a GUID of zeros"},
    {"C22", "2"},
    {"C23", "success"},
    {"C27", "an empty text"},
    {"F35", "drivers of any class; which of the two Windows does is to be asked of one"},
    {"I02", "0xE0000000, as for a mistake in line 1"},
    {"L10", "none, and not where to go on"},
    {"N23", "the default"},
    {"N25", "last error 0"},
    {"O10", "success"},
    {"O12", "87"},
    {"O13", "only messages of the range"},
    {"R09", "-1, and no window is looked for"},
};

// What the gap filler is for, under every Wine,
const std::vector<const char*> Filled = {
    "A30", "B19", "E08", "E09", "E10", "E11", "E12", "E14", "E15", "E19", "F13", "F25",
    "F32", "F33", "F43", "F44", "F45", "F46", "F47", "F48", "H02", "H09", "H21", "H25",
    "H28", "J01", "J02", "J03", "J04", "J05", "J06", "J07", "J08", "J09", "J10", "J12",
    "K02", "K03", "K04", "K05", "K10", "K11", "P06", "P22", "P23",
};
// under Wine 8, which says that it removed an INF and keeps it,
const std::vector<const char*> FilledInWine8 = {"H20", "H23", "H26", "H27", "H29", "H41"};
// and under Wine 10, which copies an INF without a catalog and says that it failed.
const std::vector<const char*> FilledInWine10 = {
    "H03", "H04", "H06", "H07", "H08", "H10", "H11", "H12",
    "H13", "H14", "H15", "H16", "H24", "H31", "H42",
};

// And what it has taken Windows' other answer to.
const Deviations OfGapFiller = {
    {"F14", "122, as the functions of its family; versions of Windows differ"},
};

Deviations PlainWine(const std::vector<const char*>& filledInThisVersion) {
    Deviations all = OfWine;
    for (const auto* const ids : {&Filled, &filledInThisVersion}) {
        for (const char* const id : *ids) {
            all.push_back({id, "the gap filler fills it in"});
        }
    }
    return all;
}

Deviations FilledWine() {
    Deviations all = OfWine;
    all.insert(all.end(), OfGapFiller.begin(), OfGapFiller.end());
    return all;
}

} // namespace

const std::vector<Deviation>& DeviationsOf(const std::string& world) {
    static const Deviations none;
    static const std::map<std::string, Deviations> worlds = {{"machine", OfMachine},
                                                             {"wine8", PlainWine(FilledInWine8)},
                                                             {"wine10", PlainWine(FilledInWine10)},
                                                             {"gapfilled", FilledWine()}};
    const auto found = worlds.find(world);
    return found == worlds.end() ? none : found->second;
}

const char* ReasonToDiffer(const std::string& world, const std::string& id) {
    const Deviations& all = DeviationsOf(world);
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Deviation& deviation) { return deviation.Id == id; });
    return found == all.end() ? nullptr : found->Reason;
}

} // namespace conformance
