// What the program reads and changes of the devnodes in a device information set.
#pragma once

#include "common/text.h"
#include "platform/owners.h"

#include <memory>
#include <optional>

// The devices of the USB enumerator, of all classes. `flags` adds DIGCF_PRESENT where devices that
// are not attached are not wanted. Empty on failure; the last error tells why.
DeviceInfoSetOwner OpenUsbDevices(DWORD flags);

// The instance ID, possibly empty; nothing when it cannot be read into 200 characters.
std::optional<std::wstring> ReadInstanceId(HDEVINFO set, SP_DEVINFO_DATA& device);

// The first of the device's hardware IDs; nothing when they cannot be read.
std::optional<std::wstring> ReadFirstHardwareId(HDEVINFO set, SP_DEVINFO_DATA& device);

// The name of the device's class, empty when it has none; nothing when it cannot be read.
std::optional<std::wstring> ReadClassName(HDEVINFO set, SP_DEVINFO_DATA& device);

// Sets CONFIGFLAG_REINSTALL in the device's config flags and keeps the other flags, so that the
// system looks for a driver when the device next arrives. False when the flags cannot be read or
// written.
bool MarkForReinstall(HDEVINFO set, SP_DEVINFO_DATA& device);
