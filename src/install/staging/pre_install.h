// The staging road: the packet's INF files go into the system's INF store, so that Plug and Play
// finds the driver when the device arrives.
#pragma once

// Stages the packet under a watchdog, sets up the composite devices, and marks the maker's devices
// for reinstallation. True when all INF files were copied and the device tree was refreshed. False
// with a line of the step that failed. After a failed copy or a timeout with mode 2 it runs
// UpdateInstall before it returns false. Waits without limit for each of its threads to start.
bool PreInstall();
