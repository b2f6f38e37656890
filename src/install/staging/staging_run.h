// Copying the packet's INF files into the system's store under a watchdog.
#pragma once

#include "config/driver_packet.h"

// How a staging ended. Only a copy that went wrong calls for the direct installation: a machine
// that refuses semaphores or threads is not to be touched any further.
enum class Staging { NotStarted, Failed, Copied };

// Copies the INF files on one thread while another times each copy, and waits for the first message
// of the two, which decides. Logs "PreInstall: Message ..." with it; NotStarted with a line of the
// step that failed. Waits without limit for each thread to start.
Staging StageUnderWatchdog(const InfSet& infs);
