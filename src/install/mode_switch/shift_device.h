// Switching a device out of its storage mode.
#pragma once

// Sends the configured device its switch order ([SHIFTDEVICE] in Setup.ini): a vendor control code
// to the USB device itself (SHIFTMODE 1), or a SCSI command to its CD-ROM. True also when nothing
// is to be done, when the device is not present, and whatever it answers: the order is fire and
// forget, the matching that follows sees what came of it. False with one line "ShiftDevice: ..."
// when a system call fails or the configuration is incomplete.
bool ShiftDevice();
