// Marking of the maker's devices for reinstallation.
#pragma once

#include <cstdint>

// Sets CONFIGFLAG_REINSTALL on every USB device of the maker that the system has recorded, attached
// or not, and that has a class: such a device then gets its driver from the staged INF files when
// it next appears. Does nothing in an uninstall run. 1 when the walk ended, 0 when the devices
// could not be listed. Logs each device that it deals with.
std::uint32_t SetDeviceReinstallFlag();
