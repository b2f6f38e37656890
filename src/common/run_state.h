// The little state that the whole run shares. It lives until the process ends.
#pragma once

#include "common/text.h"

#include <cstdint>

// 1 = install, 0 = uninstall. Set from the command line, cleared before a rollback: it also picks
// the Setup.ini sections that are read.
extern std::uint8_t SetupMode;

// Setup.ini [INSTALL] MODE, read in install runs only: 0 and 2 stage the INF files, 1 installs the
// present devices directly, any other value installs nothing.
extern std::int32_t InstallModeValue;

// The thread that runs the setup, stored before any other thread exists. The staging threads post
// their messages to it.
extern std::uint32_t MainThreadId;

// Base ID of the first device that the direct installation matched, at most 199 characters; empty
// before. Scripts read it as $DEVID.
extern std::wstring MatchedDeviceBaseId;

// Upper-cased instance IDs of the devices that the cleanup flagged for reinstallation, in that
// order. Kept for whoever looks into the process; the program itself reads it nowhere.
extern TextList ReinstallMarkedDevices;
