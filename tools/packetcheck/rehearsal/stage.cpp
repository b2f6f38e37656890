#include "rehearsal/stage.h"

#include "rehearsal/scene.h"

#include "common/run_state.h"

#include <algorithm>
#include <array>

namespace rehearsal {

namespace {

Stage* TheStage = nullptr;

// The part of `path` behind `folder` and a backslash; nothing when it lies elsewhere.
std::optional<std::wstring_view> Inside(std::wstring_view path, std::wstring_view folder) {
    if (path.size() <= folder.size() || path[folder.size()] != L'\\' ||
        !EqualIgnoringCase(path.substr(0, folder.size()), folder)) {
        return std::nullopt;
    }
    return path.substr(folder.size() + 1);
}

// Windows enumerates devices in the order of their registry keys: enumerator, device, instance.
std::array<std::wstring, 3> PlaceInRegistry(const StageDevice& device) {
    const std::wstring id = UpperCase(device.InstanceId());
    const std::size_t first = id.find(L'\\');
    const std::size_t second = id.find(L'\\', first + 1);
    return {id.substr(0, first), id.substr(first + 1, second - first - 1), id.substr(second + 1)};
}

} // namespace

Stage::Stage(Place place) : place_(std::move(place)) {
    if (place_.Files == nullptr) {
        place_.Files = std::make_shared<FileCache>();
    }
    TheStage = this;
}

Stage::~Stage() {
    TheStage = nullptr;
}

Stage* Stage::Current() {
    return TheStage;
}

void Stage::SetScene() {
    Store = PacketInStore();
    SetScene(ListedDevices());
}

void Stage::SetScene(std::vector<StageDevice> devices) {
    Store = PacketInStore();
    Devices = std::move(devices);
    std::stable_sort(Devices.begin(), Devices.end(),
                     [](const StageDevice& left, const StageDevice& right) {
                         return PlaceInRegistry(left) < PlaceInRegistry(right);
                     });
    Milliseconds = 0;
    waits_ = 0;
    Threads.clear();
    Messages.clear();
    events_.clear();
}

std::wstring Stage::RealPath(std::wstring_view path) const {
    if (const auto inPacket = Inside(path, place_.At)) {
        return std::wstring(place_.Folder).append(L"\\").append(*inPacket);
    }
    if (const auto inStore = Inside(path, BeforeLast(StoreFolder, L'\\'))) {
        for (const StoreEntry& entry : Store) {
            if (EqualIgnoringCase(entry.Name, *inStore)) {
                return entry.Source;
            }
        }
    }
    return {};
}

void Stage::Write(Event event) {
    event.Mode = SetupMode;
    event.BaseId = MatchedDeviceBaseId;
    events_.push_back(std::move(event));
}

std::vector<Event> Stage::TakeEvents() {
    return std::exchange(events_, {});
}

void Stage::Pass(std::uint32_t milliseconds) {
    // No run that ends waits that often: it looks for a device that never comes.
    constexpr int MostWaits = 3000;
    Milliseconds += milliseconds;
    if (++waits_ > MostWaits) {
        throw EndlessWait{};
    }
}

} // namespace rehearsal
