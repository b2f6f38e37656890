// Re-enumeration of the device tree.
#pragma once

// Makes the system look for devices anew, from the root down. False with "RefreshDeviceSet: Locate
// ..." or "RefreshDeviceSet: Reenumerate ...".
bool ReenumerateDeviceTree();

// Waits the configured seconds ([ENUM] SCSIRSPTIMEOUT) and until no installation is pending,
// re-enumerates the device tree and waits again. Logs its beginning and its end; false with the
// lines above. Waits without limit for the system's pending installations.
bool RefreshDeviceSet();
