// The little state that the whole run shares. It lives until the process ends.
#pragma once

#include "common/text.h"

#include <cstdint>

// What the run does: InstallRun or UninstallRun. Set from the command line, and to UninstallRun
// before a rollback: it also picks the Setup.ini sections that are read.
extern std::uint8_t SetupMode;
inline constexpr std::uint8_t UninstallRun = 0;
inline constexpr std::uint8_t InstallRun = 1;

// How an install run installs, Setup.ini [INSTALL] MODE; any other number installs nothing.
extern std::int32_t InstallModeValue;
// Stages the INF files.
inline constexpr std::int32_t ModeStage = 0;
// Installs the present devices directly.
inline constexpr std::int32_t ModeDirect = 1;
// Stages the INF files, and installs directly when a copy fails.
inline constexpr std::int32_t ModeStageOrDirect = 2;

// The thread that runs the setup, stored before any other thread exists. The staging threads post
// their messages to it.
extern std::uint32_t MainThreadId;

// Base ID of the first device that the direct installation matched, at most 199 characters; empty
// before. Scripts read it as $DEVID.
extern std::wstring MatchedDeviceBaseId;

// Upper-cased instance IDs of the devices that the cleanup flagged for reinstallation, in that
// order. Only a debugger or a memory dump shows it: the program reads it nowhere.
extern TextList ReinstallMarkedDevices;
