// The process entry: reads the switch, runs the install or the uninstall, and reports the outcome.

#include "common/run_state.h"
#include "config/config_reader.h"
#include "install/devices/device_tree.h"
#include "operations/registry_operations.h"
#include "platform/platform.h"
#include "setup/install.h"
#include "setup/switches.h"
#include "setup/uninstall.h"
#include "setup/version.h"
#include "system/hook.h"
#include "ui/progress_window.h"

namespace {

// Removes the hook while the process ends, in every run.
const CHookHelper HookHelper{};

// Calendar time in whole seconds. Only differences are used, so it counts from where the system
// does.
std::int64_t SecondsNow() {
    constexpr std::int64_t UnitsPerSecond = 10'000'000;
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    ULARGE_INTEGER units{};
    units.LowPart = time.dwLowDateTime;
    units.HighPart = time.dwHighDateTime;
    return static_cast<std::int64_t>(units.QuadPart) / UnitsPerSecond;
}

void ShowVersion() {
    MessageBoxW(nullptr, L"Version: " VERSION_TEXT, L"Version", MB_OK);
}

bool RunInstall() {
    InstallModeValue = ReadConfigInt(L"INSTALL", L"MODE");
    if (InstallModeValue != ModeStage && !InstallHook()) {
        return false;
    }
    if (Install()) {
        ShowLangText(L"STR_INSTALL_SUCCESS");
        return true;
    }
    WriteLog(L"Setup: Setup process fail,begin rollback...");
    SetupMode = UninstallRun;
    UnInstall(false);
    ShowLangText(L"STR_INSTALL_FAIL");
    return false;
}

bool RunUninstall() {
    if (!UnInstall(true)) {
        ShowLangText(L"STR_UNINSTALL_FAIL");
        return false;
    }
    if (!ReenumerateDeviceTree()) {
        return false;
    }
    ShowLangText(L"STR_UNINSTALL_SUCCESS");
    return true;
}

bool RunSetup(const wchar_t* commandLine) {
    switch (ReadSwitch(commandLine)) {
    case Switch::None:
        ShowVersion();
        return false;
    case Switch::Invalid:
        WriteLog(L"Setup: Invalid command line %s", commandLine);
        return false;
    case Switch::Install:
        SetupMode = InstallRun;
        break;
    case Switch::Uninstall:
        SetupMode = UninstallRun;
        break;
    }
    // A window that cannot be shown is not reported as a failure; should it ever be, the run ends
    // here.
    if (!ShowProgressUI()) {
        return false;
    }
    // The result counts for the other sections only: what the run depends on stands there.
    RunRegeditSection(L"PROCESS");
    return SetupMode == InstallRun ? RunInstall() : RunUninstall();
}

// The end of every run, also of the version box: the closing line, and a pause in which the
// progress window can be read.
void CloseRun(bool succeeded, std::int64_t startTime) {
    constexpr DWORD ReadingTime = 2000; // milliseconds
    if (succeeded) {
        WriteLog(L"Setup: Setup process complete, total %d seconds used",
                 static_cast<int>(SecondsNow() - startTime));
    } else {
        WriteLog(L"Setup: Setup process fail,see more detail in log file");
    }
    Sleep(ReadingTime);
}

} // namespace

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPWSTR commandLine,
                    int /*showCommand*/) {
    // A medium that vanishes, as a modem's CD-ROM does, must not stop an unattended run with a box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    const std::int64_t startTime = SecondsNow();
    MainThreadId = GetCurrentThreadId();
    WriteLog(L"Setup: Main thread started, thread id 0x%08X", MainThreadId);
    const bool succeeded = RunSetup(commandLine);
    CloseRun(succeeded, startTime);
    return succeeded ? 1 : 0;
}
