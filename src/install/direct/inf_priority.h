// The order in which the packet's INF files are offered to a device.
#pragma once

#include "common/text.h"

// Clears `infSet` and fills it with the packet's INF files, sorted by device class: serial ports
// come before modems, modems before network adapters, and so on (see RankOfClass). INF files of one
// rank keep the listing order; one whose class cannot be read comes last. False with
// "GetInfSetWithPriority: Get driver packet ..." when the packet has none.
bool GetInfSetWithPriority(TextList& infSet);
