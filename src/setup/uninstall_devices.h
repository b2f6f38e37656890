// The devices that an uninstall removes, and the INF files that serve them.
#pragma once

#include "inf/models.h"
#include "platform/platform.h"

#include <list>

// One device to remove.
struct RemovalRecord {
    // Upper-cased.
    std::wstring InstanceId;
    SP_DEVINFO_DATA Device;
};
// In the order of removal.
using RemovalList = std::list<RemovalRecord>;

// Collects the devices of the set whose ID contains one of `ids`, and into `oemInfs` the distinct
// paths of the OEM INF files that offer a driver for them. Interfaces of composite devices are put
// in front. A device that contains two of the IDs is recorded twice. False when a driver list
// cannot be read or an enumeration breaks off; an instance ID that cannot be read ends the
// collecting and is true.
bool CollectDevicesToRemove(HDEVINFO set, const DeviceIdList& ids, RemovalList& removals,
                            TextList& oemInfs);

// Removes the devices in list order and logs what came of each.
void RemoveDevices(HDEVINFO set, RemovalList& removals);
