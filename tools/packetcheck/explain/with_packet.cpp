#include "explain/with_packet.h"

#include "explain/results.h"

#include "output/utf8.h"
#include "plan/make_plan.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace explain {

namespace {

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

// "USB\VID_1234&PID_5678&MI_00\6&1&0&0000" -> without what is behind the last backslash, when it is
// an instance ID.
std::string DeviceIdOf(const std::string& id) {
    const std::size_t last = id.rfind('\\');
    return Upper(last == id.find('\\') ? id : id.substr(0, last));
}

// The device without its function.
std::string BaseOf(const std::string& id) {
    const std::string upper = Upper(id);
    return upper.find("&MI_") == std::string::npos ? upper : upper.substr(0, upper.rfind('&'));
}

using Ids = std::set<std::string>;

// Devices that the run saw: those that it installed or was about to, and those that the rollback
// found, for the cleanup had taken the remembered ones away.
Ids SeenIn(const Explanation& result) {
    static const std::vector<std::string_view> lines = {
        "UpdateInstall: Matched device", "UpdateInstall: Device", "UnInstall: Removing device"};
    Ids seen;
    for (const Entry& entry : result.Lines) {
        const bool names =
            std::any_of(lines.begin(), lines.end(), [&entry](auto line) { return entry.Is(line); });
        if (names && !entry.Values.empty()) {
            seen.insert(DeviceIdOf(entry.Values.front()));
        }
    }
    return seen;
}

Ids InstalledIn(const Explanation& result) {
    Ids installed;
    for (const FunctionResult& row : result.Functions) {
        if (row.IsGood && !row.Device.empty()) {
            installed.insert(DeviceIdOf(row.Device));
        }
    }
    return installed;
}

// The device that the run was about: the one that was seen, else the one with as many functions as
// the run waited for.
const plan::Expected* DeviceOf(const plan::Plan& plan, const Ids& seen, int listed) {
    for (const plan::Expected& expected : plan.ExpectedCounts) {
        const bool isSeen = std::any_of(seen.begin(), seen.end(), [&expected](const auto& id) {
            return BaseOf(id) == Upper(Utf8(expected.BaseId));
        });
        if (isSeen) {
            return &expected;
        }
    }
    const plan::Expected* found = nullptr;
    for (const plan::Expected& expected : plan.ExpectedCounts) {
        if (static_cast<int>(expected.Functions) == listed) {
            if (found != nullptr) {
                return nullptr;
            }
            found = &expected;
        }
    }
    return found;
}

std::vector<plan::Pair> FunctionsOfDevice(const plan::Plan& plan, const std::string& base) {
    std::vector<plan::Pair> functions;
    for (const plan::Pair& pair : plan.Pairs) {
        if (BaseOf(Utf8(pair.Id)) == base) {
            functions.push_back(pair);
        }
    }
    return functions;
}

int ListedIn(const Explanation& result) {
    int listed = 0;
    for (const Entry& entry : result.Lines) {
        if (entry.Text.find("devices matched in match cycle") != std::string::npos &&
            entry.Values.size() > 2) {
            listed = std::atoi(entry.Values[2].c_str());
        }
    }
    return listed;
}

std::string Listing(const plan::Pair& pair) {
    return Utf8(pair.Id) + " (" + Utf8(pair.Inf) + ")";
}

void TellMissing(const plan::Plan& plan, const plan::Expected& device, const Ids& there,
                 const std::string& verb, Explanation& result) {
    for (const plan::Pair& pair : FunctionsOfDevice(plan, Upper(Utf8(device.BaseId)))) {
        if (!there.contains(Upper(Utf8(pair.Id)))) {
            result.FromPacket.push_back(Listing(pair) + " " + verb);
        }
    }
    if (device.Possible < device.Functions) {
        result.FromPacket.push_back(
            "the packet makes the matching wait for " + std::to_string(device.Functions) +
            " functions of " + Utf8(device.BaseId) + ", of which only " +
            std::to_string(device.Possible) + " can ever arrive: PacketCheck check tells why");
    }
}

void TellSuccess(const plan::Plan& plan, Explanation& result) {
    const Ids installed = InstalledIn(result);
    if (installed.empty()) {
        return;
    }
    if (const plan::Expected* const device = DeviceOf(plan, installed, 0)) {
        const std::size_t before = result.FromPacket.size();
        TellMissing(plan, *device, installed, "got no driver in this run", result);
        if (result.FromPacket.size() != before && result.Doubts.empty()) {
            result.Doubts.emplace_back("the packet knows functions that this run did not install");
            result.Verdict += ". There is reason for doubt";
        }
    }
}

void TellFailure(const plan::Plan& plan, Explanation& result) {
    const Ids seen = SeenIn(result);
    const int listed = ListedIn(result);
    if (listed == 0) {
        return;
    }
    const plan::Expected* const device = DeviceOf(plan, seen, listed);
    if (device == nullptr) {
        result.FromPacket.emplace_back("the log does not tell which device of the packet it was");
        return;
    }
    if (seen.empty()) {
        result.FromPacket.emplace_back("the log does not tell which functions were there; the "
                                       "packet lists these:");
    }
    TellMissing(plan, *device, seen, seen.empty() ? "is listed" : "was never seen", result);
}

} // namespace

void AddFromPacket(Explanation& result, const std::wstring& folder) {
    const std::optional<Generation> generation = GenerationNamed(Wide(result.Generation));
    if (!generation) {
        result.FromPacket.emplace_back("the log does not say which Windows it is from, so the "
                                       "packet cannot be compared");
        return;
    }
    const plan::Plan plan = plan::MakePlan({folder, L"", *generation, true});
    if (plan.Staging.empty()) {
        result.FromPacket.push_back("the packet has no INF in " + Utf8(plan.Folder));
        return;
    }
    if (result.End == Ending::Success) {
        TellSuccess(plan, result);
    } else if (result.Why &&
               (result.Why->Name == "functions-missing" || result.Why->Name == "device-pulled" ||
                result.Why->Name == "composite-not-restarted")) {
        TellFailure(plan, result);
    }
}

} // namespace explain
