// The system's own functions behind the replacements.
#pragma once

#include "system.h"

// Looked up in the library itself, so never one of our replacements. The type is that of the
// declaration; SETUPAPI(SetupDiGetClassDevsW)(...) is a call.
template <typename Function>
Function* Original(const wchar_t* library, const char* name) {
    const HMODULE module = LoadLibraryW(library);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

#define SETUPAPI(name) (Original<decltype(name)>(L"setupapi.dll", #name))
