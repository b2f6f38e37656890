// Drivers and states of a composite device.
#pragma once

#include <cstdint>
#include <string>

// What CompositeDeviceSetup is asked to do.
inline constexpr std::uint32_t CompositeInstall = 0;
inline constexpr std::uint32_t CompositeEnable = 1;
inline constexpr std::uint32_t CompositeDisable = 2;

// State 0 puts a driver on the composite device: the packet's own INF ([USERSETTING] LOADSERIAL) or
// the system's generic composite driver (LOADUSBCCGP). State 1 enables and 2 disables every present
// USB device with that ID. Does nothing and returns true unless NEEDCOMPOSITEDEAL is on.
// `compositeId` is compared with hardware IDs less their last '&' part; null matches no device. In
// state 0 with LOADUSBCCGP it is overwritten with "USB\COMPOSITE" once the device is found.
// False with one line "CompositeDeviceSetup: ..." or "ChangeDeviceState: ..."; a driver that could
// not be installed is logged and true.
bool CompositeDeviceSetup(std::uint32_t state, std::wstring* compositeId);
