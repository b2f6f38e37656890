// The direct road: drivers are installed on the devices that are present.
#pragma once

// Switches the device into its working mode, waits until its functions have appeared, and installs
// each with the packet's INF that lists it, INF by INF in the order of their classes, with the
// configured retries ([INSTALL] RETRYCOUNT and INTERVAL). Leaves the first matched device's base ID
// in MatchedDeviceBaseId. True when every INF has been offered without a fatal outcome, also when a
// device found no suitable one. False with a line of the step that failed; devices installed before
// it stay installed.
bool UpdateInstall();
