// The machine's functions that the program finds by name (GetProcAddress); null for a name that the
// library does not have.
#pragma once

#include "platform/platform.h"

#include <string_view>

namespace machine {

FARPROC FindNewDevFunction(std::string_view name);
FARPROC FindVersionFunction(std::string_view name);
// Of setupapi.dll.
FARPROC FindStoreFunction(std::string_view name);

template <typename Function>
FARPROC AddressOf(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

} // namespace machine
