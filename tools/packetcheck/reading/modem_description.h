// A modem as the lab describes it (lab/modem/README.md): which device nodes it shows, and when.
#pragma once

#include "common/text.h"

#include <cstdint>

namespace reading {

inline constexpr int StoragePersonality = 1;
inline constexpr int ModemPersonality = 2;

struct ModemNode {
    std::wstring Name;
    std::size_t Modem = 0; // position among the modems
    int Personality = ModemPersonality;
    std::wstring Device;
    TextList Hardware; // first one first; at least the device ID
    std::wstring Interface;
    std::uint32_t ArrivesAfter = 0; // milliseconds
    std::uint32_t LeavesAfter = 0;  // 0: stays
    bool NeverArrives = false;
};

struct ModemSwitch {
    int Start = StoragePersonality;
    int AfterOrder = ModemPersonality;
    bool Obeys = true;
    std::uint32_t SwitchDelay = 0; // milliseconds
    std::uint32_t GoneDelay = 0;
    std::wstring VendorOrder; // "0x00222190"; empty: none
    std::vector<std::uint8_t> ScsiOrder;
};

struct ModemDescription {
    std::wstring File;
    std::vector<ModemSwitch> Modems;
    std::vector<ModemNode> Nodes;
};

// Reads a description with the files that it includes. Throws std::runtime_error, which names file
// and line, at what is no section, no known key or no value of its kind.
ModemDescription ReadModemDescription(const std::wstring& path);

} // namespace reading
