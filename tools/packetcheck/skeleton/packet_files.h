// A packet that is right from the start, for its author to complete.
#pragma once

#include "skeleton/device.h"

#include <map>

namespace skeleton {

// Paths with backslashes, relative to the packet's folder, and their bytes.
using Files = std::map<std::wstring, std::string>;

// Setup.ini, Lang.ini, and for each generation the INF files with stand-ins for drivers and
// catalogs.
Files PacketFiles(const Device& device);

// The description of the modem for the lab (lab/modem/README.md).
std::string ModemDescription(const Device& device);

// The text of one INF, with CR LF.
std::wstring InfOf(const Device& device, std::size_t function);

// The text of Setup.ini, with CR LF.
std::wstring SettingsOf(const Device& device);

// What a CD-ROM's first hardware ID looks like: "USBSTOR\CdRomVendor__Product_________1.00".
std::wstring DriveId(const Storage& storage);

} // namespace skeleton
