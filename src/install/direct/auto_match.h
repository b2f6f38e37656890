// Waiting until the functions of the device have appeared.
#pragma once

#include "common/text.h"

// Clears `matched` and fills it with the device IDs of the present devices that the packet's INF
// files list, in enumeration order. After a fixed wait of five seconds it looks in cycles, until as
// many are there as the packet lists functions of the first one's device, or as many as
// [USERSETTING] MATCHMODE asks for. After cycle [ENUM] MAXCYCLE it looks one last time, at once;
// without MAXCYCLE it goes on as long as devices are missing. False with an "AutoDeviceMatch: ..."
// line when a step fails, no device matches or fewer match than in the cycle before; false without
// a line of its own when the last look did not suffice.
bool AutoDeviceMatch(TextList& matched);
