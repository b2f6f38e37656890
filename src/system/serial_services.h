// The serial-port driver services of the maker's devices, recognised by their display name.
#pragma once

#include "platform/platform.h"

#include <cstdint>

// Stops each of the maker's serial-port services and gives it a numbered display name, so that
// several can be told apart. 0xFFFFFFFF when the service manager cannot be opened, 0 otherwise,
// also when the services cannot be listed. Writes no log line.
std::uint32_t AdjustSerialServices();

// Walks `count` records of driver services and renames those that carry the marker. Always 1.
int RenameSerialServices(SC_HANDLE manager, const ENUM_SERVICE_STATUSW* services, DWORD count);
