#include "install/composite/composite_ids.h"

#include "inf/packet_ids.h"
#include "install/composite/composite_id_list.h"
#include "install/devices/device_ids.h"
#include "install/devices/device_nodes.h"
#include "install/devices/device_walk.h"

namespace {

// All hardware IDs of the packet's INF files, in listing order.
bool CollectPacketIds(const std::wstring& folder, DeviceIdList& ids) {
    InfSet infs;
    if (!FindDriverPacketFiles(folder, L"*.INF", infs)) {
        WriteLog(L"GetCompositeDeviceIDFromInf: Get driver packet %s inf set fail,error code "
                 L"0x%08X",
                 folder.c_str(), GetLastError());
        return false;
    }
    if (infs.empty()) {
        WriteLog(L"GetCompositeDeviceIDFromInf: No inf found in driver packet %s", folder.c_str());
        return false;
    }
    std::wstring unreadable;
    if (!CollectDeviceIds(infs, ids, unreadable)) {
        // Names the first INF whichever could not be read; the reader's own line, just above, names
        // the right one.
        WriteLog(L"GetCompositeDeviceIDFromInf: Get device id from inf %s fail,error code 0x%08X",
                 infs.front().c_str(), GetLastError());
        return false;
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
    if (!instanceId->empty() && ListHolds(compositeIds, deviceId)) {
        id = deviceId;
        WriteLog(L"GetCompositeDeviceIDExist: Composite device %s is going to be deal with",
                 id.c_str());
    }
    return true;
}

// Puts the first present device of `compositeIds` into `id`, which stays empty when there is none.
bool FindPresentDevice(const TextList& compositeIds, std::wstring& id) {
    const DeviceInfoSetOwner set = OpenUsbDevices(DIGCF_PRESENT);
    if (!set) {
        WriteLog(L"GetCompositeDeviceIDExist: Get all present device fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    DeviceWalk walk(set.Get());
    while (id.empty() && walk.Next()) {
        if (!TakeIfComposite(set.Get(), walk.Entry(), compositeIds, id)) {
            return false;
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"GetCompositeDeviceIDExist: Enum device set info fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    return true;
}

} // namespace

bool GetCompositeDeviceIDFromInf(TextList& ids, bool& exactMatchFound) {
    const std::wstring folder = GetDriverDir();
    // A marker that support searches for.
    WriteLog(L"GetCompositeDeviceIDFromInf: kkkkkkkkkk %s kkkkkkkkk", folder.c_str());
    DeviceIdList packetIds;
    if (!CollectPacketIds(folder, packetIds)) {
        return false;
    }
    AddCompositeIds(packetIds, ids, exactMatchFound);
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
    if (!GetCompositeDeviceIDFromInf(compositeIds, exactMatchFound) ||
        !FindPresentDevice(compositeIds, id)) {
        return false;
    }
    if (id.empty()) {
        WriteLog(L"GetCompositeDeviceIDExist: No composite device in inf found in system");
    }
    return !id.empty();
}
