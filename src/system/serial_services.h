// Renaming of the maker's serial-port services. Their display name tells that they are the maker's.
#pragma once

#include "platform/platform.h"

#include <cstdint>

// Walks the system's driver services; each of the maker's is stopped and gets a display name with
// its place in the list, so that equal ones can be told apart. 0xFFFFFFFF without access to the
// service manager, else 0, whether or not there was a list to walk. Writes no log line.
std::uint32_t AdjustSerialServices();

// Does so for the first `count` records of `services`. Always 1; nothing reads it.
int RenameSerialServices(SC_HANDLE manager, const ENUM_SERVICE_STATUSW* services, DWORD count);
