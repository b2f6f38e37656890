// The name of the driver packet's folder.
#pragma once

#include <string>
#include <string_view>

// The name of the packet's folder for a generation, with a final backslash: "WIN7\", "WIN10\", and
// with the bitness for every other one ("VISTA64\", "WINXP64\", "64\" when it is unknown).
std::wstring PacketFolderName(std::wstring_view osName, std::wstring_view bitness);
