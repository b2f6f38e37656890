#include "test_aids.h"

#include "journal.h"

#include <atomic>
#include <cwchar>

namespace {

std::wstring Setting(const wchar_t* name) {
    wchar_t value[64];
    const DWORD length = GetEnvironmentVariableW(name, value, 64);
    return length < 64 ? std::wstring(value, length) : std::wstring();
}

// The number behind the colon that follows `prefix`; 0 when the text begins differently.
unsigned long NumberBehind(const std::wstring& text, const std::wstring& prefix,
                           std::wstring& rest) {
    if (text.compare(0, prefix.size(), prefix) != 0) {
        return 0;
    }
    wchar_t* end = nullptr;
    const unsigned long number = std::wcstoul(text.c_str() + prefix.size(), &end, 0);
    rest = *end == L':' ? end + 1 : L"";
    return number;
}

} // namespace

void KillIfAsked(unsigned callNumber) {
    const std::wstring wanted = Setting(L"GAPFILL_KILL");
    if (!wanted.empty() && std::wcstoul(wanted.c_str(), nullptr, 0) == callNumber) {
        Note(L"killed here");
        TerminateProcess(GetCurrentProcess(), KilledExitCode);
    }
}

bool CopyMustFail() {
    static std::atomic<unsigned long> copies = 0;
    const unsigned long number = ++copies;
    const std::wstring wanted = Setting(L"GAPFILL_COPY");
    std::wstring rest;
    if (NumberBehind(wanted, L"hang:", rest) == number) {
        Note(L"hangs, as asked");
        Sleep(INFINITE);
    }
    if (NumberBehind(wanted, L"fail:", rest) != number) {
        return false;
    }
    Note(L"fails, as asked");
    SetLastError(std::wcstoul(rest.c_str(), nullptr, 0));
    return true;
}
