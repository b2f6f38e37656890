// What end-to-end tests ask for through the environment:
//   GAPFILL_KILL=N             the process is ended at its N-th filled call, as by TerminateProcess
//   GAPFILL_COPY=hang:N        the N-th SetupCopyOEMInfW never returns
//   GAPFILL_COPY=fail:N:ERROR  the N-th SetupCopyOEMInfW fails with that error (decimal or 0x...)
#pragma once

#include "system.h"

// The exit code of a process that was ended by GAPFILL_KILL.
constexpr UINT KilledExitCode = 99;

void KillIfAsked(unsigned callNumber);

// Called once per SetupCopyOEMInfW. True when the call must fail; the last error is then set.
bool CopyMustFail();
