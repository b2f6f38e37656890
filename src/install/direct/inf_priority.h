// The order in which the packet's INF files are offered to a device.
#pragma once

#include "config/driver_packet.h"

// Clears `infs` and fills it with the packet's INF files, sorted by device class: serial ports come
// before modems, modems before network adapters, and so on (see RankOfClass). INF files of one rank
// keep the listing order; one whose class cannot be read ranks with those without a class. A single
// INF is not read at all. False with "GetInfSetWithPriority: Get driver packet ..." when the packet
// has none.
bool GetInfSetWithPriority(InfSet& infs);
