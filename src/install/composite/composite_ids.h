// The composite (whole) devices that the driver packet is for.
#pragma once

#include "common/text.h"

// Adds the composite IDs that the packet's INF files stand for to `ids` (see AddCompositeIds), and
// sets `exactMatchFound` when one was listed without an interface part; neither is cleared first.
// False with a "GetCompositeDeviceIDFromInf: ..." line when the packet has no INF, one cannot be
// read, or none lists an ID.
bool GetCompositeDeviceIDFromInf(TextList& ids, bool& exactMatchFound);

// Puts the exact ID that the packet's INF files list last into `id`. False with the line above, or
// with "GetCompositeDeviceIDFromInfExactMatch: No exact match ..." when there is none.
bool GetCompositeDeviceIDFromInfExactMatch(std::wstring& id);

// Puts the ID of the first present USB device that is one of the packet's composite devices into
// `id`, which the caller passes empty. False with a "GetCompositeDeviceIDExist: ..." line when
// there is none or the devices cannot be listed, and with the first line above when the packet's
// IDs cannot be read.
bool GetCompositeDeviceIDExist(std::wstring& id);
