// The hardware IDs of the whole packet.
#pragma once

#include "config/driver_packet.h"
#include "inf/models.h"

// Appends the IDs of all `infs` to `ids`, INF by INF; an ID that two INF files list is then there
// twice. False when an INF cannot be read, `unreadable` is then its path; what was read until then
// stays in `ids`.
bool CollectDeviceIds(const InfSet& infs, DeviceIdList& ids, std::wstring& unreadable);

// Puts into `infPath` the path of the packet's first INF that lists `deviceId`. Returns whether
// `infPath` is not empty afterwards: it is never cleared here, so callers pass an empty one. False
// with "GetDeviceIDInDriverPacket: Get driver packet ..." when the packet has no INF, and with
// "GetDeviceIDInDriverPacket: Get device id from inf ..." when one cannot be read; later ones are
// then not tried.
bool GetDeviceIDInDriverPacket(const std::wstring& deviceId, std::wstring& infPath);
