// What follows from the packet's INF files alone.
#pragma once

#include "plan/plan.h"

namespace plan {

// Fills Infs, Staging, Pairs and ExpectedCounts. A stage must stand.
void AddPacketFacts(Plan& result);

} // namespace plan
