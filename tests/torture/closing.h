// How every run of the program ends, whatever failed in it.
#pragma once

#include "machine/machine.h"

#include <set>
#include <string>

namespace torture {

// The exit code, the closing line and the rollback tell the same, and only the line of a late
// thread follows. For runs whose process has not ended: the hook is still set.
void CheckClosing(const machine::Machine& m, int result);

// The same of a run to the end of its process, where the hook has its line when its removal failed.
void CheckClosingAndHook(const machine::Machine& m, int result);

// Calls of a staging worker after whose failure the run waits for it without limit.
std::set<std::string> WorkerSignals();

} // namespace torture
