// Libraries of the system that are loaded at run time.
#pragma once

#include "platform/platform.h"

// Loads a library of the system by its file name, from the system's own folder: one of that name
// beside the program, which runs elevated, is never taken. Null on failure; the last error tells
// why. It stays loaded until the process ends: a thread of the library may still run when the
// caller is done.
HMODULE LoadSystemLibrary(const wchar_t* name);

// The same, and then asks for it by its bare name, which finds the one that is loaded by now:
// whoever watches what the program loads, as a compatibility shim does, knows the name only.
HMODULE LoadSystemLibraryByName(const wchar_t* name);
