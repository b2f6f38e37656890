#include "pace.h"

#include <algorithm>
#include <cwchar>

namespace {

double Pace() {
    wchar_t text[8] = {};
    const DWORD length = GetEnvironmentVariableW(L"GAPFILL_PACE", text, 8);
    const double pace = length < 8 ? std::wcstod(text, nullptr) : 0;
    return pace > 0 ? pace : 1;
}

DWORD Paced(DWORD milliseconds) {
    static const double pace = Pace();
    if (milliseconds == INFINITE || milliseconds == 0) {
        return milliseconds;
    }
    constexpr DWORD Longest = INFINITE - 1;
    return static_cast<DWORD>(std::clamp<double>(milliseconds / pace, 1, Longest));
}

} // namespace

void WINAPI PacedSleep(DWORD milliseconds) {
    Sleep(Paced(milliseconds));
}

DWORD WINAPI PacedWaitForSingleObject(HANDLE object, DWORD milliseconds) {
    return WaitForSingleObject(object, Paced(milliseconds));
}
