// The families of rules. Each looks at one side of the packet and adds what it finds.
#pragma once

#include "rules/finding.h"
#include "rules/packet.h"

namespace rules {

// --- one INF file at a time ---
void CheckIds(const PacketGeneration& generation, const PacketInf& inf, Findings& findings);
void CheckInstallSections(const PacketInf& inf, Findings& findings);
void CheckCopyLists(const PacketInf& inf, Findings& findings);
void CheckDestinations(const PacketInf& inf, Findings& findings);
void CheckVersion(const PacketGeneration& generation, const PacketInf& inf, Findings& findings);
void CheckDelivery(const PacketGeneration& generation, const PacketInf& inf, Findings& findings);
void CheckInfFile(const PacketGeneration& generation, const PacketInf& inf, Findings& findings);

// --- a generation's folder ---
void CheckCounting(const Packet& packet, const PacketGeneration& generation, Findings& findings);
void CheckUninstalledIds(const PacketGeneration& generation, Findings& findings);
void CheckRehearsal(const PacketGeneration& generation, Findings& findings);
void CheckModem(const Packet& packet, const PacketGeneration& generation, Findings& findings);

// --- the packet as a whole ---
void CheckFolders(const Packet& packet, Findings& findings);
void CheckLibraries(const Packet& packet, Findings& findings);
void CheckNames(const Packet& packet, Findings& findings);
void CheckValues(const Packet& packet, Findings& findings);
void CheckSettings(const Packet& packet, Findings& findings);
void CheckSwitch(const Packet& packet, Findings& findings);
void CheckScripts(const Packet& packet, Findings& findings);
void CheckOperations(const Packet& packet, Findings& findings);
void CheckLanguage(const Packet& packet, Findings& findings);

} // namespace rules
