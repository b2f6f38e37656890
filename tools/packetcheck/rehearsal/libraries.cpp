// Libraries that are loaded at run time. Each is there and has the functions that the program looks
// for.
#include "rehearsal/imports.h"
#include "rehearsal/library_functions.h"

namespace rehearsal {

namespace {

HMODULE WINAPI Load(LPCWSTR /*name*/) {
    static int library = 0;
    return static_cast<HMODULE>(static_cast<void*>(&library));
}

HMODULE WINAPI LoadAs(LPCWSTR name, HANDLE /*file*/, DWORD /*flags*/) {
    return Load(name);
}

BOOL WINAPI Free(HMODULE /*library*/) {
    return TRUE;
}

FARPROC WINAPI FunctionAddress(HMODULE /*library*/, LPCSTR name) {
    FARPROC const found = InstallFunction(name);
    return found != nullptr ? found : VersionFunction(name);
}

} // namespace

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(LoadLibraryW, Load);
REHEARSED(LoadLibraryExW, LoadAs);
REHEARSED(GetModuleHandleW, Load);
REHEARSED(FreeLibrary, Free);
REHEARSED(GetProcAddress, FunctionAddress);
