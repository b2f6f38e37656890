// The system's headers, in the order in which they want to be included.
#pragma once

#include <windows.h>

#include <cfgmgr32.h>
#include <newdev.h>
#include <regstr.h>
#include <setupapi.h>

#include <string>
#include <vector>

// Missing in the compiler's headers.
constexpr DWORD kNoSuchDevice = 0xE000020B;          // ERROR_NO_SUCH_DEVINST
constexpr DWORD kNoDriverSelected = 0xE0000203;      // ERROR_NO_DRIVER_SELECTED
constexpr DWORD kNoClassInstallParams = 0xE0000215;  // ERROR_NO_CLASSINSTALL_PARAMS
constexpr DWORD kInvalidClassInstaller = 0xE000020D; // ERROR_INVALID_CLASS_INSTALLER

// Keeps the thread's last error over whatever is done in between.
class LastErrorKeeper {
public:
    LastErrorKeeper() : error_(GetLastError()) {}
    ~LastErrorKeeper() { SetLastError(error_); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    DWORD error_;
};

// FALSE with a last error, in one statement.
inline BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}
