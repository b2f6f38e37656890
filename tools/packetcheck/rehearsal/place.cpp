// Where the program is, on which machine, and how late it is.
#include "rehearsal/imports.h"

#include <algorithm>
#include <cstdarg>

namespace rehearsal {

namespace {

DWORD CopyCut(std::wstring_view text, LPWSTR buffer, DWORD size) {
    const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
    text.copy(buffer, length);
    buffer[length] = L'\0';
    return static_cast<DWORD>(length);
}

DWORD WINAPI ModuleFileName(HMODULE /*module*/, LPWSTR buffer, DWORD size) {
    Stage* const stage = Stage::Current();
    return stage == nullptr ? 0 : CopyCut(stage->Where().At + L"\\Setup.exe", buffer, size);
}

UINT WINAPI WindowsDirectory(LPWSTR buffer, UINT size) {
    return CopyCut(WindowsFolderName, buffer, size);
}

UINT WINAPI SystemDirectory(LPWSTR buffer, UINT size) {
    return CopyCut(std::wstring(WindowsFolderName) + L"\\system32", buffer, size);
}

UINT WINAPI ErrorMode(UINT /*mode*/) {
    return 0;
}

void WINAPI SystemInfo(LPSYSTEM_INFO info) {
    *info = {};
    info->wProcessorArchitecture = PROCESSOR_ARCHITECTURE_AMD64;
}

void WINAPI TimeNow(LPFILETIME time) {
    constexpr std::uint64_t UnitsPerMillisecond = 10'000;
    Stage* const stage = Stage::Current();
    const std::uint64_t units = stage == nullptr ? 0 : stage->Milliseconds * UnitsPerMillisecond;
    time->dwLowDateTime = static_cast<DWORD>(units);
    time->dwHighDateTime = static_cast<DWORD>(units >> 32U);
}

DWORD WINAPI TicksNow() {
    Stage* const stage = Stage::Current();
    return stage == nullptr ? 0 : static_cast<DWORD>(stage->Milliseconds);
}

void WINAPI Wait(DWORD milliseconds) {
    if (Stage* const stage = Stage::Current()) {
        stage->Write({.What = Deed::Waited, .Number = milliseconds});
        stage->Pass(milliseconds);
    }
}

int WINAPIV FormatText(LPWSTR buffer, LPCWSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = wvsprintfW(buffer, format, arguments);
    va_end(arguments);
    return length;
}

BOOL WINAPI EndProcess(HANDLE /*process*/, UINT /*status*/) {
    throw ProcessEnded{};
}

} // namespace

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(GetModuleFileNameW, ModuleFileName);
REHEARSED(GetWindowsDirectoryW, WindowsDirectory);
REHEARSED(GetSystemDirectoryW, SystemDirectory);
REHEARSED(SetErrorMode, ErrorMode);
REHEARSED(GetTickCount, TicksNow);
REHEARSED(GetSystemInfo, SystemInfo);
REHEARSED(GetSystemTimeAsFileTime, TimeNow);
REHEARSED(Sleep, Wait);
REHEARSED_UNDECLARED(wsprintfW, FormatText);
REHEARSED(TerminateProcess, EndProcess);
