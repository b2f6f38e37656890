#include "platform/system_libraries.h"

HMODULE LoadSystemLibrary(const wchar_t* name) {
    return LoadLibraryW(name);
}
