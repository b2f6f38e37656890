// A device information set of the stage.
#pragma once

#include "rehearsal/handles.h"

namespace rehearsal {

struct DeviceSet : HandleContent {
    // Positions in Stage::Devices; entries of an interface set name a device and its face.
    std::vector<std::size_t> Members;
    // Hardware IDs and paths of the device interfaces, when it is a set of those.
    std::vector<std::wstring> Interfaces;
    // The driver list that was built last: INF paths and the ID that they serve.
    std::vector<std::pair<std::wstring, std::wstring>> Drivers;
};

DeviceSet& SetOf(HDEVINFO handle);

// The device that `data` names; null for a face of an interface set, or without a stage.
StageDevice* DeviceOf(HDEVINFO handle, const SP_DEVINFO_DATA* data);

} // namespace rehearsal
