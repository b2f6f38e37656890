#include "inf/packet_ids.h"

#include "platform/platform.h"

bool CollectDeviceIds(const InfSet& infs, DeviceIdList& ids, std::wstring& unreadable) {
    for (const std::wstring& inf : infs) {
        DeviceIdList infIds;
        if (!GetDeviceIDFromInf(inf, infIds)) {
            unreadable = inf;
            return false;
        }
        ids.insert(ids.end(), infIds.begin(), infIds.end());
    }
    return true;
}

bool GetDeviceIDInDriverPacket(const std::wstring& deviceId, std::wstring& infPath) {
    InfSet infs;
    if (!ListPacketInfs(infs, L"GetDeviceIDInDriverPacket: Get driver packet %s inf set fail,error "
                              L"code 0x%08X")) {
        return false;
    }
    for (const std::wstring& inf : infs) {
        DeviceIdList ids;
        if (!GetDeviceIDFromInf(inf, ids)) {
            WriteLog(L"GetDeviceIDInDriverPacket: Get device id from inf %s fail,error code 0x%08X",
                     inf.c_str(), GetLastError());
            return false;
        }
        if (ListHolds(ids, deviceId)) {
            infPath = inf;
            break;
        }
    }
    return !infPath.empty();
}
