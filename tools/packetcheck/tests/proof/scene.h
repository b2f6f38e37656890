// A random packet on the simulated machine.
#pragma once

#include "machine/machine.h"
#include "proof/dice.h"
#include "proof/random_packet.h"

namespace proof {

// Writes the packet's files to D:\Packet on a Windows 10.
void PutPacket(machine::Machine& m, const RandomPacket& packet);

// The machine that a plan assumes: an earlier installation of the packet, its device plugged in
// with every function that it lists. Can be set up again after a run.
void SetUpAsPlanned(machine::Machine& m);

// Some of the devices, some twice, and strangers; with or without copies in the store.
void SetUpAtRandom(machine::Machine& m, Dice& dice);

} // namespace proof
