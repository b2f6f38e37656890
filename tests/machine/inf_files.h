// INF files that the real parser has read. The program opens the same few files again and again,
// and parsing them is most of what a run costs; so each is parsed once until it changes.
#pragma once

#include "platform/platform.h"

#include <string>

namespace machine {

// Like SetupGetInfInformationW and SetupOpenInfFileW for the file at a real path. The handle
// belongs to the machine: it stays open until the file changes.
BOOL InfInformation(const std::wstring& realPath, PSP_INF_INFORMATION result, DWORD size,
                    PDWORD needed);
HINF OpenInf(const std::wstring& realPath, PCWSTR infClass, DWORD style, PUINT errorLine);

// The file at this real path is about to change.
void ForgetInf(const std::wstring& realPath);
void ForgetAllInfs();

} // namespace machine
