// Lets the program's waits pass faster, for runs that do not ask about real time, or slower:
//   GAPFILL_PACE=N   what the program waits for takes one N-th of its time (default 1; 0.5: twice)
// Time limits change like the waits, so that their order stays; what Wine itself needs does not.
#pragma once

#include "system.h"

void WINAPI PacedSleep(DWORD milliseconds);
DWORD WINAPI PacedWaitForSingleObject(HANDLE object, DWORD milliseconds);
