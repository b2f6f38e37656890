// The composite (whole) devices that a packet's hardware IDs stand for.
#pragma once

#include "common/text.h"

// Adds the composite IDs of `hardwareIds` to `ids`: upper-cased, at most 199 characters, those that
// the list holds already left out (case ignored). IDs without "&MI_" (exact IDs) go to the front,
// so that the last one stands first; those cut from interface IDs go to the back. `exactMatchFound`
// becomes true when any exact ID was met, also one that was left out; it never becomes false.
void AddCompositeIds(const TextList& hardwareIds, TextList& ids, bool& exactMatchFound);
