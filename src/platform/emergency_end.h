// The end of a process that cannot go on: an exception that no one catches, such as for want of
// memory.
#pragma once

#include "platform/platform.h"

// The process's exit code then. No code of Windows' own looks like it (bit 29 is the
// application's).
inline constexpr UINT EmergencyStatus = 0xE0000001;

// Ends the process at once: no message box, no log line, no closing step. What an installation had
// done by then stays for the cleanup of the next one.
[[noreturn]] void EndInEmergency();
