// What the program sees of this library: the two functions of the hook library in whose place it is
// loaded, and, before the program's first instruction, the filled import table.
#include "import_table.h"
#include "system.h"

extern "C" unsigned char SetHook(const wchar_t* path);
extern "C" unsigned char CleanHook();

extern "C" unsigned char SetHook(const wchar_t* /*path*/) {
    return 1;
}

extern "C" unsigned char CleanHook() {
    return 1;
}

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID /*reserved*/);

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(library);
        FillImports();
    }
    return TRUE;
}
