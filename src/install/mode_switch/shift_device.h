// Switching a device out of its storage mode.
#pragma once

// Sends the switch order that section [SHIFTDEVICE] of Setup.ini configures to the first present
// device that it is for: a vendor control code to the USB device itself (SHIFTMODE 1), or a SCSI
// command to its CD-ROM. True when no switch is wanted, when the device is not there, and when the
// order was sent, whatever the device answers: the matching that follows sees what came of it.
// False when the configuration is incomplete, the devices cannot be looked through, or the device
// cannot be opened: with a "ShiftDevice: ..." line, in the first mode after the lines of
// GetCompositeDeviceIDFromInfExactMatch.
bool ShiftDevice();
