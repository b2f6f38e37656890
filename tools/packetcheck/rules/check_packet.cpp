#include "rules/check_packet.h"

#include "rules/families.h"

namespace rules {

namespace {

void CheckInf(const PacketGeneration& generation, const PacketInf& inf, Findings& findings) {
    CheckInfFile(generation, inf, findings);
    if (inf.IsFolder || !inf.Readable) {
        return;
    }
    CheckIds(generation, inf, findings);
    CheckInstallSections(inf, findings);
    CheckCopyLists(inf, findings);
    CheckDestinations(inf, findings);
    CheckVersion(generation, inf, findings);
    CheckDelivery(generation, inf, findings);
}

void CheckGeneration(const Packet& packet, const PacketGeneration& generation, Findings& findings) {
    for (const PacketInf& inf : generation.Infs) {
        CheckInf(generation, inf, findings);
    }
    CheckCounting(packet, generation, findings);
    CheckUninstalledIds(generation, findings);
    CheckModem(packet, generation, findings);
}

} // namespace

// A run that fails for a reason that no rule has told of.
void CheckRehearsal(const PacketGeneration& generation, Findings& findings) {
    const plan::Run& run = generation.Install.Main;
    if (run.End != plan::Outcome::Success && Count(findings, Level::Error) == 0) {
        findings.push_back({RuleId::RehearsalFails,
                            {generation.For.Folder(), 0},
                            L"the install fails on " + generation.For.Name + L": " + run.Reason});
    }
}

Findings CheckPacket(const Packet& packet) {
    Findings findings;
    CheckFolders(packet, findings);
    CheckLibraries(packet, findings);
    CheckNames(packet, findings);
    CheckValues(packet, findings);
    CheckSettings(packet, findings);
    CheckSwitch(packet, findings);
    CheckScripts(packet, findings);
    CheckOperations(packet, findings);
    CheckLanguage(packet, findings);
    for (const PacketGeneration& generation : packet.Generations) {
        CheckGeneration(packet, generation, findings);
    }
    for (const PacketGeneration& generation : packet.Generations) {
        CheckRehearsal(generation, findings);
    }
    Sort(findings);
    return findings;
}

} // namespace rules
