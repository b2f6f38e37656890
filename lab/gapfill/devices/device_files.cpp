// Opening devices by their interface path.
#include "replacements.h"

#include "journal.h"
#include "modem/control_codes.h"

#include <cwchar>

namespace {

bool IsDevicePath(PCWSTR path) {
    return path != nullptr && std::wcsncmp(path, L"\\\\?\\", 4) == 0 &&
           std::wcschr(path, L'#') != nullptr;
}

bool IsRefused(HANDLE device) {
    DWORD written = 0;
    return !DeviceIoControl(device, MODEM_NODE_MAY_BE_OPEN, nullptr, 0, nullptr, 0, &written,
                            nullptr) &&
           GetLastError() == ERROR_ACCESS_DENIED;
}

} // namespace

// Windows: fails with the error of the device's driver when that refuses. Wine 8: the driver is
// asked, and the caller gets a handle whatever it says. Everything but device interfaces goes
// straight through.
HANDLE WINAPI FilledCreateFile(LPCWSTR path, DWORD access, DWORD share,
                               LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                               HANDLE templateFile) {
    const HANDLE file =
        CreateFileW(path, access, share, security, disposition, flags, templateFile);
    if (file == INVALID_HANDLE_VALUE || !IsDevicePath(path)) {
        return file;
    }
    Enter("CreateFileW", path);
    const DWORD error = GetLastError();
    const bool refused = IsRefused(file);
    if (refused) {
        CloseHandle(file);
    }
    SetLastError(refused ? ERROR_ACCESS_DENIED : error);
    return refused ? INVALID_HANDLE_VALUE : file;
}
