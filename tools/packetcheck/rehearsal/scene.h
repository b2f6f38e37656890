// What stands on the stage: the packet's devices, and what an earlier installation left.
#pragma once

#include "rehearsal/stage.h"

namespace rehearsal {

// True when a device can have this as its own ID (its instance ID up to the last backslash). An ID
// with a revision never is one, and neither is one that only names a class of devices.
bool CanBeDeviceId(std::wstring_view id);

// One device for each such ID that the packet lists, in listing order and of its INF's class.
std::vector<StageDevice> ListedDevices();

// A foreign INF and one copy of each INF of the packet.
std::vector<StoreEntry> PacketInStore();

// A device's first hardware ID: with the revision that every USB device reports.
std::wstring FirstHardwareId(std::wstring_view deviceId);

} // namespace rehearsal
