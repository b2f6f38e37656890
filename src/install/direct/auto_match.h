// Waiting until the functions of the device have appeared.
#pragma once

#include "common/text.h"

// Clears `matched` and fills it with the device IDs of the present devices that the packet's INF
// files list, in enumeration order. Looks in cycles until as many are there as the packet leads one
// to expect of the first one, or as many as [USERSETTING] MATCHMODE asks for. At cycle [ENUM]
// MAXCYCLE it disables and enables the composite device once and looks a last time; without
// MAXCYCLE it goes on as long as devices are missing. Starts with a fixed wait of five seconds.
// False with an "AutoDeviceMatch: ..." line when a step fails, no device matches or a matched one
// disappears; false without a line when the last look did not suffice.
bool AutoDeviceMatch(TextList& matched);
