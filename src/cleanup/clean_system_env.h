// What earlier installs of the packet left behind is cleared before a new one.
#pragma once

// Adjusts the serial services, then takes each INF of the packet in three passes: stale devices,
// copies in the system's INF store, driver files. False at the first pass that fails; what was done
// stays done. Logs "CleanSystemEnv: Get driver packet ..." when the packet has no INF.
bool CleanSystemEnv();
