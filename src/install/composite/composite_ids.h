// The composite (whole) devices that the driver packet is for.
#pragma once

#include "install/devices/device_ids.h"

// Derives the composite IDs from the hardware IDs that the packet's INF files list: `ids` gets the
// list as CompositeIdsOf makes it, `exactMatchFound` tells whether any ID was listed without an
// interface part. False with a "GetCompositeDeviceIDFromInf: ..." line when the packet has no INF,
// one cannot be read, or none lists an ID.
bool GetCompositeDeviceIDFromInf(TextList& ids, bool& exactMatchFound);

// Puts the exact ID met last into `id`. False with the line above, or with
// "GetCompositeDeviceIDFromInfExactMatch: No exact match ..." when there is none.
bool GetCompositeDeviceIDFromInfExactMatch(std::wstring& id);

// Puts the ID of the first present USB device that is one of the packet's composite devices into
// `id`. False with a "GetCompositeDeviceIDExist: ..." line when there is none or the devices cannot
// be listed.
bool GetCompositeDeviceIDExist(std::wstring& id);
