#include "conformance/deviations.h"

#include <map>

namespace conformance {

namespace {

const std::map<std::string, std::vector<Deviation>> All = {
    {"machine",
     {
         {"A05", "not simulated yet"}, {"A06", "not simulated yet"}, {"A07", "not simulated yet"},
         {"A08", "not simulated yet"}, {"A14", "not simulated yet"}, {"A15", "not simulated yet"},
         {"A17", "not simulated yet"}, {"A18", "not simulated yet"}, {"A19", "not simulated yet"},
         {"A23", "not simulated yet"}, {"A26", "not simulated yet"}, {"A27", "not simulated yet"},
         {"A28", "not simulated yet"}, {"A29", "not simulated yet"}, {"A31", "not simulated yet"},
         {"A33", "not simulated yet"}, {"B15", "not simulated yet"}, {"B20", "not simulated yet"},
         {"C16", "not simulated yet"}, {"C24", "not simulated yet"}, {"C25", "not simulated yet"},
         {"C26", "not simulated yet"}, {"E09", "not simulated yet"}, {"F05", "not simulated yet"},
         {"F06", "not simulated yet"}, {"F09", "not simulated yet"}, {"F10", "not simulated yet"},
         {"F11", "not simulated yet"}, {"F13", "not simulated yet"}, {"F14", "not simulated yet"},
         {"F15", "not simulated yet"}, {"F16", "not simulated yet"}, {"F17", "not simulated yet"},
         {"F18", "not simulated yet"}, {"F19", "not simulated yet"}, {"F20", "not simulated yet"},
         {"F21", "not simulated yet"}, {"F22", "not simulated yet"}, {"F23", "not simulated yet"},
         {"F24", "not simulated yet"}, {"F25", "not simulated yet"}, {"F26", "not simulated yet"},
         {"F27", "not simulated yet"}, {"F28", "not simulated yet"}, {"F29", "not simulated yet"},
         {"F30", "not simulated yet"}, {"F31", "not simulated yet"}, {"F34", "not simulated yet"},
         {"F35", "not simulated yet"}, {"F40", "not simulated yet"}, {"F41", "not simulated yet"},
         {"F42", "not simulated yet"}, {"F49", "not simulated yet"}, {"H02", "not simulated yet"},
         {"H04", "not simulated yet"}, {"H10", "not simulated yet"}, {"H16", "not simulated yet"},
         {"H21", "not simulated yet"}, {"H25", "not simulated yet"}, {"H29", "not simulated yet"},
         {"H30", "not simulated yet"}, {"H34", "not simulated yet"}, {"H35", "not simulated yet"},
         {"H36", "not simulated yet"}, {"H41", "not simulated yet"}, {"I02", "not simulated yet"},
         {"I93", "not simulated yet"}, {"J06", "not simulated yet"}, {"J07", "not simulated yet"},
         {"J10", "not simulated yet"}, {"J12", "not simulated yet"}, {"K09", "not simulated yet"},
         {"K10", "not simulated yet"}, {"L01", "not simulated yet"}, {"L02", "not simulated yet"},
         {"L03", "not simulated yet"}, {"L04", "not simulated yet"}, {"L05", "not simulated yet"},
         {"L06", "not simulated yet"}, {"L07", "not simulated yet"}, {"L08", "not simulated yet"},
         {"L10", "not simulated yet"}, {"M14", "not simulated yet"}, {"N23", "not simulated yet"},
         {"N25", "not simulated yet"}, {"O06", "not simulated yet"}, {"O10", "not simulated yet"},
         {"O26", "not simulated yet"}, {"P06", "not simulated yet"}, {"P20", "not simulated yet"},
         {"P22", "not simulated yet"}, {"P23", "not simulated yet"}, {"R07", "not simulated yet"},
         {"R08", "not simulated yet"}, {"R09", "not simulated yet"},
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
