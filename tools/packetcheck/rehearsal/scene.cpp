#include "rehearsal/scene.h"

#include "config/driver_packet.h"
#include "inf/driver_files.h"
#include "inf/models.h"

#include <algorithm>

namespace rehearsal {

namespace {

TextList PacketInfs() {
    TextList infs;
    FindDriverPacketFiles(GetDriverDir(), L"*.INF", infs);
    return infs;
}

// A fault that would end the process here ends it in the rehearsal as well, which then tells.
std::wstring ClassOf(const std::wstring& inf) {
    std::wstring name;
    try {
        GetInfClassName(inf, name);
    } catch (const ProcessEnded&) {
        name.clear();
    }
    return name;
}

bool IsOnStage(const std::vector<StageDevice>& devices, const std::wstring& id) {
    return std::any_of(devices.begin(), devices.end(), [&id](const StageDevice& device) {
        return EqualIgnoringCase(device.Id, id);
    });
}

} // namespace

bool CanBeDeviceId(std::wstring_view id) {
    const std::wstring upper = UpperCase(id);
    const std::size_t backslash = upper.find(L'\\');
    if (backslash == std::wstring::npos || backslash == 0 || backslash + 1 == upper.size()) {
        return false;
    }
    if (!upper.starts_with(L"USB\\")) {
        return true;
    }
    return upper.starts_with(L"USB\\VID_") && Contains(upper, L"&PID_") &&
           !Contains(upper, L"&REV_");
}

std::vector<StageDevice> ListedDevices() {
    std::vector<StageDevice> devices;
    for (const std::wstring& inf : PacketInfs()) {
        DeviceIdList ids;
        GetDeviceIDFromInf(inf, ids);
        const std::wstring className = ClassOf(inf);
        for (const std::wstring& id : ids) {
            if (CanBeDeviceId(id) && !IsOnStage(devices, id)) {
                devices.push_back({id, className});
            }
        }
    }
    return devices;
}

std::vector<StoreEntry> PacketInStore() {
    std::vector<StoreEntry> store{{ForeignInf, {}}};
    for (const std::wstring& inf : PacketInfs()) {
        store.push_back(
            {L"oem" + std::to_wstring(store.size()) + L".inf", Stage::Current()->RealPath(inf)});
    }
    return store;
}

std::wstring FirstHardwareId(std::wstring_view deviceId) {
    std::wstring id(deviceId);
    const std::wstring upper = UpperCase(deviceId);
    if (!upper.starts_with(L"USB\\")) {
        return id;
    }
    const std::size_t interfacePart = upper.find(L"&MI_");
    return id.insert(interfacePart == std::wstring::npos ? id.size() : interfacePart, L"&REV_0100");
}

} // namespace rehearsal
