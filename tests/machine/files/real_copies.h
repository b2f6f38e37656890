// Real files for what only the real system reads: INF files by its parser, settings by its profile
// functions. There is one for each content that any machine has had, so the same few files are
// written and parsed once in thousands of runs.
#pragma once

#include "platform/platform.h"

#include <string>

namespace machine {

// The path of a real file with this content. It stays until ForgetRealCopies or the process's end.
std::wstring RealCopyOf(const std::string& bytes);

// Like SetupGetInfInformationW and SetupOpenInfFileW for a file with this content. The handle stays
// open as long as the copy.
BOOL InfInformation(const std::string& bytes, PSP_INF_INFORMATION result, DWORD size,
                    PDWORD needed);
HINF OpenInf(const std::string& bytes, PCWSTR infClass, DWORD style, PUINT errorLine);

// Like GetPrivateProfileStringW and GetPrivateProfileIntW.
DWORD ProfileText(const std::string& bytes, LPCWSTR section, LPCWSTR key, LPCWSTR otherwise,
                  LPWSTR buffer, DWORD size);
UINT ProfileNumber(const std::string& bytes, LPCWSTR section, LPCWSTR key, INT otherwise);

// Lets the copies go when there are many; nobody may hold one of their handles.
void LimitRealCopies();

} // namespace machine
