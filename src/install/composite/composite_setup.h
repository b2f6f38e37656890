// Drivers and states of a composite device.
#pragma once

#include <cstdint>
#include <string>

// What CompositeDeviceSetup is asked to do.
inline constexpr std::uint32_t CompositeInstall = 0;
inline constexpr std::uint32_t CompositeEnable = 1;
inline constexpr std::uint32_t CompositeDisable = 2;

// State 0 puts a driver on the composite device: the packet's own INF ([USERSETTING] LOADSERIAL)
// and, when that is off or the installation failed, the system's generic composite driver
// (LOADUSBCCGP). States 1 and 2 enable and disable every present USB device with that ID. Does
// nothing and returns true unless NEEDCOMPOSITEDEAL is on. A device has the ID when its first
// hardware ID, less everything from the last '&' on, equals `compositeId`; null matches no device.
// In state 0 with LOADUSBCCGP `compositeId` is overwritten with "USB\COMPOSITE" once the device is
// found. False with one line "CompositeDeviceSetup: ..." or "ChangeDeviceState: ..." of the step
// that failed, after the reader's own lines. True also when the generic driver could not be
// installed, which is logged, and when the newdev library is missing for it, which is not.
bool CompositeDeviceSetup(std::uint32_t state, std::wstring* compositeId);
