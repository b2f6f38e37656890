#include "common/checked.h"

#include "platform/platform.h"

#include <cstdlib>

void EndProcessOnBadIndex() {
    constexpr UINT InvalidRuntimeParameter = 0xC0000417;
    TerminateProcess(GetCurrentProcess(), InvalidRuntimeParameter);
    // Not reached: a process always has the right to end itself.
    std::abort();
}
