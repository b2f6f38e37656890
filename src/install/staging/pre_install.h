// Staging: the packet's INF files go into the system's INF store, where Plug and Play finds the
// driver when the device arrives.
#pragma once

// Stages the packet under a watchdog, sets up the composite devices, and marks the maker's devices
// for reinstallation. True when every copy succeeded and so did both refreshes of the device tree;
// set-up and marking do not count.
// False with the line of the step that failed, if it has one (a quit message has none). With mode 2
// a copy that failed or took too long is followed by UpdateInstall, and false all the same. Waits
// without limit for each of its threads to start and for the system's pending installations.
bool PreInstall();
