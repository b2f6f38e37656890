// Marking of the maker's devices for reinstallation.
#pragma once

#include <cstdint>

// Sets CONFIGFLAG_REINSTALL on every USB device of the maker that the system has recorded, attached
// or not, and that has a class: the system then looks for a driver when the device next appears.
// Marks nothing in an uninstall run. 0 when the devices could not be listed to the end; 1
// otherwise, also when an instance ID that cannot be read ended the walk. Logs each device that it
// deals with.
std::uint32_t SetDeviceReinstallFlag();
