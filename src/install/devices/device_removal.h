// Removal of a device.
#pragma once

#include "platform/platform.h"

#include <optional>

// Removes the device through its class installer, from all hardware profiles.
enum class RemovalStep { SetParameters, CallInstaller, Done };
struct Removal {
    // The step that failed (the last error tells why), or Done.
    RemovalStep Step = RemovalStep::Done;
    // Whether Windows must be restarted: DI_NEEDRESTART and DI_NEEDREBOOT of the device's install
    // flags. Nothing when they cannot be read, or when the removal failed.
    std::optional<DWORD> RebootState;
};
Removal RemoveDevice(HDEVINFO set, SP_DEVINFO_DATA& device);
