// Driver packets and settings at random, the faulty ones among them.
#pragma once

#include "machine/description.h"

#include <cstdint>
#include <random>

namespace proof {

struct PacketFile {
    std::wstring Name; // "modem.inf"
    std::wstring Text;
};

struct RandomPacket {
    std::wstring Ini;
    // Of the folder for Windows 10.
    std::vector<PacketFile> Infs;
    std::vector<std::wstring> Drivers; // names of .sys files beside them
};

// The same packet for the same seed.
RandomPacket MakePacket(std::uint32_t seed);

} // namespace proof
