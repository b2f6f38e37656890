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
constexpr DWORD NoSuchDevice = 0xE000020B;          // ERROR_NO_SUCH_DEVINST
constexpr DWORD NotAnOemInf = 0xE000023C;           // ERROR_NOT_AN_INSTALLED_OEM_INF
constexpr DWORD InfInUse = 0xE000023D;              // ERROR_INF_IN_USE_BY_DEVICES
constexpr DWORD NoDriverSelected = 0xE0000203;      // ERROR_NO_DRIVER_SELECTED
constexpr DWORD NoClassInstallParams = 0xE0000215;  // ERROR_NO_CLASSINSTALL_PARAMS
constexpr DWORD InvalidClassInstaller = 0xE000020D; // ERROR_INVALID_CLASS_INSTALLER

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

// TRUE with the last error that the installer's functions leave when all went well.
inline BOOL Succeed() {
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

// FALSE with a last error, in one statement.
inline BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}
