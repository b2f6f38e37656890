#include "install/composite/composite_id_list.h"

#include "common/limits.h"
#include "install/devices/device_ids.h"

void AddCompositeIds(const TextList& hardwareIds, TextList& ids, bool& exactMatchFound) {
    for (const std::wstring& hardwareId : hardwareIds) {
        const std::wstring id = UpperCase(Cut(hardwareId, DeviceIdCapacity));
        const std::size_t mark = id.find(InterfaceMark);
        if (mark != std::wstring::npos) {
            AppendDistinct(ids, id.substr(0, mark));
            continue;
        }
        exactMatchFound = true;
        if (!ListHolds(ids, id)) {
            ids.insert(ids.begin(), id);
        }
    }
}
