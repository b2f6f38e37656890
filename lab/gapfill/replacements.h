// The functions that stand in for the system's own, each with the declaration of its original.
// What each of them fills is said where it is defined.
#pragma once

#include "system.h"

// device_tree.cpp
CONFIGRET WINAPI FilledLocateDevNode(PDEVINST node, DEVINSTID_W instanceId, ULONG flags);
CONFIGRET WINAPI FilledReenumerateDevNode(DEVINST node, ULONG flags);
DWORD WINAPI FilledWaitNoPendingInstallEvents(DWORD timeout);

// device_sets.cpp
HDEVINFO WINAPI FilledGetClassDevs(const GUID* classGuid, PCWSTR enumerator, HWND parent,
                                   DWORD flags);
BOOL WINAPI FilledDestroyDeviceInfoList(HDEVINFO set);

// removed_devices.cpp
BOOL WINAPI FilledGetDeviceInstallParams(HDEVINFO set, PSP_DEVINFO_DATA device,
                                         PSP_DEVINSTALL_PARAMS_W params);

// device_files.cpp
HANDLE WINAPI FilledCreateFile(LPCWSTR path, DWORD access, DWORD share,
                               LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                               HANDLE templateFile);

// files.cpp
BOOL WINAPI FilledCopyFile(LPCWSTR from, LPCWSTR to, BOOL failIfExists);

// class_install_params.cpp
BOOL WINAPI FilledSetClassInstallParams(HDEVINFO set, PSP_DEVINFO_DATA device,
                                        PSP_CLASSINSTALL_HEADER header, DWORD size);
// class_installer.cpp
BOOL WINAPI FilledCallClassInstaller(DI_FUNCTION function, HDEVINFO set, PSP_DEVINFO_DATA device);

// driver_lists.cpp
BOOL WINAPI FilledBuildDriverInfoList(HDEVINFO set, PSP_DEVINFO_DATA device, DWORD type);
BOOL WINAPI FilledEnumDriverInfo(HDEVINFO set, PSP_DEVINFO_DATA device, DWORD type, DWORD index,
                                 PSP_DRVINFO_DATA_W driver);
BOOL WINAPI FilledGetDriverInfoDetail(HDEVINFO set, PSP_DEVINFO_DATA device,
                                      PSP_DRVINFO_DATA_W driver, PSP_DRVINFO_DETAIL_DATA_W detail,
                                      DWORD size, PDWORD needed);
BOOL WINAPI FilledDestroyDriverInfoList(HDEVINFO set, PSP_DEVINFO_DATA device, DWORD type);

// selected_driver.cpp
BOOL WINAPI FilledSetSelectedDevice(HDEVINFO set, PSP_DEVINFO_DATA device);
BOOL WINAPI FilledSetSelectedDriver(HDEVINFO set, PSP_DEVINFO_DATA device,
                                    PSP_DRVINFO_DATA_W driver);
BOOL WINAPI FilledInstallSelectedDriver(HWND parent, HDEVINFO set, LPCWSTR reserved, BOOL backup,
                                        PDWORD reboot);

// driver_store.cpp
BOOL WINAPI FilledCopyOEMInf(PCWSTR source, PCWSTR mediaLocation, DWORD mediaType, DWORD style,
                             PWSTR destination, DWORD destinationLength, PDWORD needed,
                             PWSTR* component);
BOOL WINAPI FilledUninstallOEMInf(PCWSTR name, DWORD flags, PVOID reserved);

// update_driver.cpp
BOOL WINAPI FilledUpdateDriver(HWND parent, LPCWSTR hardwareId, LPCWSTR infPath, DWORD flags,
                               PBOOL reboot);

// import_table.cpp
FARPROC WINAPI FilledGetProcAddress(HMODULE module, LPCSTR name);
