// Checking a packet against all rules.
#pragma once

#include "rules/finding.h"
#include "rules/packet.h"

namespace rules {

// Sorted by file and line.
Findings CheckPacket(const Packet& packet);

} // namespace rules
