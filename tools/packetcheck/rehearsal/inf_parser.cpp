// INF files are read by the real parser.
#include "rehearsal/imports.h"

#include <algorithm>

namespace rehearsal {

namespace {

std::wstring RealInf(const wchar_t* path) {
    Stage* const stage = Stage::Current();
    return stage == nullptr ? std::wstring() : stage->RealPath(path);
}

BOOL WINAPI InfInformation(LPCVOID spec, DWORD /*control*/, PSP_INF_INFORMATION result, DWORD size,
                           PDWORD needed) {
    const std::wstring path = RealInf(static_cast<const wchar_t*>(spec));
    if (path.empty()) {
        return FailWith(FALSE, ERROR_FILE_NOT_FOUND);
    }
    const std::vector<std::byte>& block = Stage::Current()->Files().Infs.InformationOf(path);
    if (block.empty()) {
        return FALSE;
    }
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(block.size());
    }
    if (result == nullptr) {
        return TRUE;
    }
    if (size < block.size()) {
        return FailWith(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::copy(block.begin(), block.end(), static_cast<std::byte*>(static_cast<void*>(result)));
    return TRUE;
}

HINF WINAPI OpenInf(PCWSTR path, PCWSTR /*infClass*/, DWORD style, PUINT /*errorLine*/) {
    const std::wstring real = RealInf(path);
    if (real.empty()) {
        return FailWith<HINF>(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
    }
    return Stage::Current()->Files().Infs.Open(real, style);
}

// The cache closes it.
VOID WINAPI CloseInf(HINF /*inf*/) {}

BOOL WINAPI FindFirstLine(HINF inf, PCWSTR section, PCWSTR key, PINFCONTEXT line) {
    return SetupFindFirstLineW(inf, section, key, line);
}

BOOL WINAPI FindNextLine(PINFCONTEXT line, PINFCONTEXT next) {
    return SetupFindNextLine(line, next);
}

BOOL WINAPI LineText(PINFCONTEXT line, HINF inf, PCWSTR section, PCWSTR key, PWSTR buffer,
                     DWORD size, PDWORD needed) {
    return SetupGetLineTextW(line, inf, section, key, buffer, size, needed);
}

DWORD WINAPI FieldCount(PINFCONTEXT line) {
    return SetupGetFieldCount(line);
}

BOOL WINAPI StringField(PINFCONTEXT line, DWORD index, PWSTR buffer, DWORD size, PDWORD needed) {
    return SetupGetStringFieldW(line, index, buffer, size, needed);
}

} // namespace

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(SetupGetInfInformationW, InfInformation);
REHEARSED(SetupOpenInfFileW, OpenInf);
REHEARSED(SetupCloseInfFile, CloseInf);
REHEARSED(SetupFindFirstLineW, FindFirstLine);
REHEARSED(SetupFindNextLine, FindNextLine);
REHEARSED(SetupGetLineTextW, LineText);
REHEARSED(SetupGetFieldCount, FieldCount);
REHEARSED(SetupGetStringFieldW, StringField);
