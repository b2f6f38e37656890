// Stale device entries of one packet INF.
#pragma once

#include "inf/models.h"
#include "platform/owners.h"

// Deals with every device of the set whose ID the INF lists, install runs only: a device without a
// class or of the INF's own class (`className`, upper-cased) is removed; one that now sits under
// another class is marked for reinstallation and its instance ID added to ReinstallMarkedDevices.
// Takes the set over. False when the enumeration broke off; a device whose instance ID cannot be
// read also ends the walk, but is true. Logs "CleanDevice: ..." lines.
bool CleanDevice(const std::wstring& className, const DeviceIdList& ids, DeviceInfoSetOwner set);
