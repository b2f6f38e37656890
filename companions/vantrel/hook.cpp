// The two functions that Vantrel64.DLL exports. The program only needs them to succeed; the maker's
// own library does its process-wide work here.
#include "platform/maker_libraries.h"

extern "C" unsigned char SetHook(const wchar_t* /*path*/) {
    return 1;
}

extern "C" unsigned char CleanHook() {
    return 1;
}
