// Tells when a newer Wine has closed a gap by itself.
#pragma once

#include "system.h"

// Called where the system's own function turned out to behave like Windows. Under a Wine later than
// 8 it notes, once per function, that the gap need no longer be filled.
void NoteNoLongerNeeded(const char* function);

// True under a Wine later than 8. Some gaps are probed only then, because Wine 8 is known to have
// them and the probe would be a wasted call.
bool WineIsNewer();
