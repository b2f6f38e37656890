// One install run on the simulated machine, measured.
#pragma once

#include <cstdint>

namespace bench {

// What the run works on.
struct Size {
    int PacketInfs = 1; // INF files of the packet
    int OemInfs = 10;   // foreign OEM*.INF of the store, and one of the packet's
    int Devices = 10;   // USB devices that the system knows, a few of them the packet's
};

struct Cost {
    double Seconds = 0;           // processor time of this process; waits are virtual
    std::int64_t ParserCalls = 0; // all calls of the INF parser
    std::int64_t InfReadings = 0; // INF files opened
    std::int64_t AllCalls = 0;    // calls that arrived at the machine
    bool Succeeded = false;
};

// Sets a machine up and makes the install run with this [INSTALL] MODE; the setting up is not
// measured.
Cost MeasureInstall(int mode, const Size& size);

} // namespace bench
