#include "conformance/deviations.h"

#include <map>

namespace conformance {

namespace {

const std::map<std::string, std::vector<Deviation>> All = {
    {"machine",
     {
         {"F14", "a switch of the machine: the documented answer unless told otherwise"},
         {"F35", "a switch of the machine: compatible drivers of any class unless told otherwise"},
         {"N23", "the sandbox's profile files are read by Wine, which does not find it"},
     }},
};

} // namespace

const std::vector<Deviation>& DeviationsOf(const std::string& world) {
    static const std::vector<Deviation> none;
    const auto found = All.find(world);
    return found == All.end() ? none : found->second;
}

const char* ReasonToDiffer(const std::string& world, const std::string& id) {
    for (const Deviation& deviation : DeviationsOf(world)) {
        if (deviation.Id == id) {
            return deviation.Reason;
        }
    }
    return nullptr;
}

} // namespace conformance
