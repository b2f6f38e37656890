// The body of an install run.
#pragma once

// Cleans up, runs the scripted operations before and after, and installs the packet by the road
// that InstallModeValue picks. False at the first step that fails; nothing is undone here, the
// caller rolls back.
bool Install();
