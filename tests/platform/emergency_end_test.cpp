// The end of a process on an exception that no one catches, shown with a program that has one.
#include "platform/emergency_end.h"

#include "support/doctest_support.h"

#include "common/text.h"

#include <array>
#include <optional>

namespace {

// The exit code of the probe beside these tests; nothing when it did not end within a minute, as it
// would not with a message box open.
std::optional<DWORD> StatusOfProbe(const std::wstring& kind) {
    std::array<wchar_t, MAX_PATH> executable{};
    GetModuleFileNameW(nullptr, executable.data(), MAX_PATH);
    std::wstring line =
        ReplaceAfterLast(executable.data(), L'\\', L"emergency_probe.exe") + L" " + kind;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    REQUIRE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                           &startup, &process) != FALSE);
    std::optional<DWORD> status;
    if (WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process.hProcess, &status.emplace());
    } else {
        TerminateProcess(process.hProcess, 1);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return status;
}

} // namespace

TEST_CASE("A process that cannot go on ends at once, with a code of its own") {
    for (const wchar_t* kind : {L"length", L"memory", L"position", L"exception", L"thread"}) {
        CAPTURE(kind);
        CHECK(StatusOfProbe(kind) == EmergencyStatus);
    }
    CHECK(StatusOfProbe(L"nothing") == 0U);
}
