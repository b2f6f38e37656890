// Why a run failed.
#pragma once

#include "explain/view.h"

namespace explain {

// Nothing for a success, and for a log that stops before anything failed.
std::optional<Cause> FindCause(const View& view);

} // namespace explain
