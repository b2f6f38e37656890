#include "pace.h"

#include <cwchar>

namespace {

DWORD Pace() {
    wchar_t text[8];
    const DWORD length = GetEnvironmentVariableW(L"GAPFILL_PACE", text, 8);
    const unsigned long pace = length < 8 ? std::wcstoul(text, nullptr, 10) : 0;
    return pace == 0 ? 1 : pace;
}

DWORD Paced(DWORD milliseconds) {
    static const DWORD pace = Pace();
    if (milliseconds == INFINITE || milliseconds == 0) {
        return milliseconds;
    }
    return milliseconds < pace ? 1 : milliseconds / pace;
}

} // namespace

void WINAPI PacedSleep(DWORD milliseconds) {
    Sleep(Paced(milliseconds));
}

DWORD WINAPI PacedWaitForSingleObject(HANDLE object, DWORD milliseconds) {
    return WaitForSingleObject(object, Paced(milliseconds));
}
