// The direct installation: drivers go onto the devices that are present.
#pragma once

// Switches the device into its working mode, waits until its functions have appeared, and installs
// each with the packet's INF that lists it, INF by INF in the order of their classes, with the
// configured retries ([INSTALL] RETRYCOUNT and INTERVAL). The first matched device names
// MatchedDeviceBaseId.
// True when every INF has been offered and no installation failed for good, also when a device
// found no suitable INF. False at the first step that fails, with that step's line if it has one
// (the last look of the matching has none); devices installed until then stay installed.
bool UpdateInstall();
