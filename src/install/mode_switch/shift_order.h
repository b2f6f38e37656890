// One switch order: which device interface receives it, and how it is sent.
#pragma once

#include "platform/platform.h"

#include <string>

struct ShiftOrder {
    GUID InterfaceClass;
    // Hardware ID of the device to switch.
    std::wstring DeviceId;
    // The SCSI command as text, empty for the vendor order.
    std::wstring Command;
    // True when a hardware ID is that of the device to switch.
    bool (*Matches)(std::wstring_view hardwareId, std::wstring_view deviceId);
    // Opens the device interface and sends the order. False when it cannot be opened, which is
    // logged.
    bool (*Send)(const ShiftOrder& order, const wchar_t* devicePath);
    // Log lines: the interfaces cannot be listed (error code), the device is not there (its ID).
    const wchar_t* NoInterfacesLine;
    const wchar_t* NotFoundLine;
};

// The vendor order to the USB device with hardware ID `deviceId`.
ShiftOrder VendorOrder(std::wstring deviceId);

// The SCSI command to the CD-ROM with hardware ID `deviceId`.
ShiftOrder ScsiOrder(std::wstring deviceId, std::wstring command);
