// Stand-ins that the program finds by name (GetProcAddress); null for an unknown name.
#pragma once

#include "platform/platform.h"

#include <string_view>

namespace rehearsal {

FARPROC InstallFunction(std::string_view name);
FARPROC VersionFunction(std::string_view name);

template <typename Function>
FARPROC AddressOf(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

} // namespace rehearsal
