// The packet that the lab tries the program with.
#pragma once

#include "proof/random_packet.h"

namespace proof {

// Its Setup.ini, and its INF files and drivers for Windows 10.
RandomPacket LabPacket();

} // namespace proof
