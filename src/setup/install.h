// The body of an install run.
#pragma once

// Cleans up, runs the scripted operations before and after, and installs the packet in the way that
// InstallModeValue says. False at the first step that fails; nothing is undone here, the caller
// rolls back.
bool Install();
