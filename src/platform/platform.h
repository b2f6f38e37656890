// The one door to Windows. Nothing else in the program includes a Windows header, so what the
// program needs of the system can be read off this folder.
#pragma once

#include <windows.h>
// windows.h first, the others build on it.
#include <cfgmgr32.h>
#include <newdev.h>
#include <regstr.h>
#include <setupapi.h>
#include <winioctl.h>
// Builds on winioctl.h.
#include <ntddscsi.h>

#include "platform/maker_libraries.h"

extern "C" {

#ifndef CM_WaitNoPendingInstallEvents
// Exported by setupapi.dll and cfgmgr32.dll of every Windows, but missing in some SDK headers.
// Waits until no device installation is pending; the timeout is in milliseconds.
DWORD WINAPI CMP_WaitNoPendingInstallEvents(DWORD timeout);
#endif

} // extern "C"

// Entry points that are resolved by name at run time (see system_libraries.h).
using UpdateDriverForPlugAndPlayDevicesFunction = BOOL(WINAPI*)(HWND parent, LPCWSTR hardwareId,
                                                                LPCWSTR infPath, DWORD flags,
                                                                PBOOL rebootRequired);
// Exported since Windows XP, declared in no public header. `backup` keeps a way back to the driver
// that the device has now.
using InstallSelectedDriverFunction = BOOL(WINAPI*)(HWND parent, HDEVINFO deviceInfoSet,
                                                    LPCWSTR reserved, BOOL backup,
                                                    PDWORD rebootFlags);
using GetFileVersionInfoFunction = BOOL(WINAPI*)(LPCWSTR file, DWORD handle, DWORD size,
                                                 LPVOID block);
using VerQueryValueFunction = BOOL(WINAPI*)(LPCVOID block, LPCWSTR name, LPVOID* value, PUINT size);
using SetupUninstallOEMInfFunction = BOOL(WINAPI*)(PCWSTR infFileName, DWORD flags, PVOID reserved);

// The address of an exported function, or null; the last error tells why.
template <typename Function>
Function GetFunction(HMODULE module, const char* name) {
    // By way of void*: a FARPROC is no function that could be called.
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}
