// Talks to the virtual modem's driver. Every function does nothing on a machine without it.
#pragma once

#include "system.h"

// Looks through the bus again and returns when it is done.
void ScanBus();

// Takes the node away until the next scan and returns when it is gone.
void TakeNodeOffBus(const std::wstring& instanceId);

// True while a node is being started or removed, which includes the installation of its driver.
bool BusIsWorking();
