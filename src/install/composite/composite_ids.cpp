#include "install/composite/composite_ids.h"

#include "config/driver_packet.h"
#include "inf/models.h"
#include "install/devices/device_nodes.h"

namespace {

// All hardware IDs of the packet's INF files, in listing order.
bool CollectPacketIds(const std::wstring& folder, TextList& ids) {
    TextList infSet;
    if (!FindDriverPacketFiles(folder, L"*.INF", infSet)) {
        WriteLog(L"GetCompositeDeviceIDFromInf: Get driver packet %s inf set fail,error code "
                 L"0x%08X",
                 folder.c_str(), GetLastError());
        return false;
    }
    if (infSet.empty()) {
        WriteLog(L"GetCompositeDeviceIDFromInf: No inf found in driver packet %s", folder.c_str());
        return false;
    }
    for (const std::wstring& inf : infSet) {
        DeviceIdList infIds;
        if (!GetDeviceIDFromInf(inf, infIds)) {
            // The first INF is named whichever one failed, on purpose: the line before this one, by
            // the reader, names the culprit.
            WriteLog(
                L"GetCompositeDeviceIDFromInf: Get device id from inf %s fail,error code 0x%08X",
                infSet.front().c_str(), GetLastError());
            return false;
        }
        ids.insert(ids.end(), infIds.begin(), infIds.end());
    }
    if (ids.empty()) {
        WriteLog(L"GetCompositeDeviceIDFromInf: No device found in driver packet %s",
                 folder.c_str());
        return false;
    }
    return true;
}

// Puts the device's ID into `id` when it is one of `compositeIds`. False when its instance ID
// cannot be read.
bool TakeIfComposite(HDEVINFO set, SP_DEVINFO_DATA& device, const TextList& compositeIds,
                     std::wstring& id) {
    const std::optional<std::wstring> instanceId = ReadInstanceId(set, device);
    if (!instanceId) {
        WriteLog(L"GetCompositeDeviceIDExist: Get device Instance id fail!,error code : 0X%08X",
                 GetLastError());
        return false;
    }
    const std::wstring deviceId = DeviceIdOf(*instanceId);
    if (!deviceId.empty() && ListHolds(compositeIds, deviceId)) {
        id = deviceId;
        WriteLog(L"GetCompositeDeviceIDExist: Composite device %s is going to be deal with",
                 id.c_str());
    }
    return true;
}

} // namespace

bool GetCompositeDeviceIDFromInf(TextList& ids, bool& exactMatchFound) {
    const std::wstring folder = GetDriverDir();
    // A marker that support searches for.
    WriteLog(L"GetCompositeDeviceIDFromInf: kkkkkkkkkk %s kkkkkkkkk", folder.c_str());
    TextList packetIds;
    if (!CollectPacketIds(folder, packetIds)) {
        return false;
    }
    CompositeIds composite = CompositeIdsOf(packetIds);
    ids = std::move(composite.Ids);
    exactMatchFound = composite.ExactMatchFound;
    return true;
}

bool GetCompositeDeviceIDFromInfExactMatch(std::wstring& id) {
    TextList ids;
    bool exactMatchFound = false;
    if (!GetCompositeDeviceIDFromInf(ids, exactMatchFound)) {
        return false;
    }
    if (!exactMatchFound) {
        WriteLog(L"GetCompositeDeviceIDFromInfExactMatch: No exact match composite device exist in "
                 L"inf file");
        return false;
    }
    id = ids.front();
    return true;
}

bool GetCompositeDeviceIDExist(std::wstring& id) {
    TextList compositeIds;
    bool exactMatchFound = false;
    if (!GetCompositeDeviceIDFromInf(compositeIds, exactMatchFound)) {
        return false;
    }
    const DeviceInfoSetOwner set = OpenUsbDevices(DIGCF_PRESENT);
    if (!set) {
        WriteLog(L"GetCompositeDeviceIDExist: Get all present device fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    bool readable = true;
    const WalkEnd end = WalkDevices(set.Get(), [&](SP_DEVINFO_DATA& device) {
        readable = TakeIfComposite(set.Get(), device, compositeIds, id);
        return readable && id.empty() ? WalkStep::Next : WalkStep::Stop;
    });
    if (!readable) {
        return false;
    }
    if (end == WalkEnd::Failed) {
        WriteLog(L"GetCompositeDeviceIDExist: Enum device set info fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    if (id.empty()) {
        WriteLog(L"GetCompositeDeviceIDExist: No composite device in inf found in system");
    }
    return !id.empty();
}
