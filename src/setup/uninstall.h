// Removal of what an installation left.
#pragma once

#include "inf/models.h"

// Removes the packet's USB devices (interfaces before their composite parents), the OEM INF files
// that serve them and the packet's ".sys" files, between the scripted operations. `isRealUninstall`
// is false for the rollback of a failed install, which shows no progress text of its own. False
// when the packet's IDs, a driver list or an enumeration cannot be read; removals and deletions
// that fail are only logged ("UnInstall: ..." and "RemoveFile: ..." lines).
bool UnInstall(bool isRealUninstall);

// Fills `ids` with the packet's hardware IDs, or with the one ID that the registry request of
// Setup.ini [DEVICEID] LOCATION reads. False when the packet's IDs cannot be read. Logs
// "GetDevIDToUnInstall: No device id configuration ..." when the packet's IDs are taken.
bool GetDevIDToUnInstall(DeviceIdList& ids);
