// Libraries of the system that are loaded at run time.
#pragma once

#include "platform/platform.h"

// Loads a library of the system by its file name. Null on failure; the last error tells why. It
// stays loaded until the process ends: a thread of the library may still run when the caller is
// done.
HMODULE LoadSystemLibrary(const wchar_t* name);
