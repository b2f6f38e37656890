// How every run of the program ends, whatever failed in it.
#pragma once

#include "machine/machine.h"

#include <set>
#include <string>

namespace torture {

// The exit code, the closing line and the rollback tell the same.
void CheckClosing(const machine::Machine& m, int result);

// Calls of a staging worker after whose failure the run waits for it without limit.
std::set<std::string> WorkerSignals();

} // namespace torture
