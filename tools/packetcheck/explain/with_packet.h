// What the packet at hand adds to a log: which function is missing, and whether it can come at all.
#pragma once

#include "explain/explanation.h"

namespace explain {

// Adds to `FromPacket`, and to the doubts of a success. `folder` is the one with Setup.ini, without
// a final backslash. A packet without a folder for the run's Windows is said so.
void AddFromPacket(Explanation& result, const std::wstring& folder);

} // namespace explain
