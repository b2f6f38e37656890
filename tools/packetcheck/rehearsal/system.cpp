// The log, the device tree, services, windows and the hook library.
#include "rehearsal/imports.h"

#include <cstdarg>
#include <cwchar>

namespace rehearsal {

namespace {

void Write(Event event) {
    if (Stage* const stage = Stage::Current()) {
        stage->Write(std::move(event));
    }
}

std::wstring Formatted(const wchar_t* format, va_list arguments) {
    // As long as a line of the log can be.
    constexpr std::size_t Longest = 4096;
    std::wstring line(Longest, L'\0');
    // Not swprintf: its "%s" is a narrow text with this compiler.
    const int length = _vsnwprintf(line.data(), line.size(), format, arguments);
    line.resize(length < 0 ? Longest : static_cast<std::size_t>(length));
    return line;
}

void LogLine(const wchar_t* format, ...) {
    // The program's calls keep their last error across a log line.
    const DWORD error = GetLastError();
    va_list arguments;
    va_start(arguments, format);
    Write({.What = Deed::Said, .Subject = Formatted(format, arguments)});
    va_end(arguments);
    SetLastError(error);
}

unsigned char InstallTheHook(const wchar_t* path) {
    Write({.What = Deed::HookSet, .Subject = path});
    return 1;
}

unsigned char RemoveTheHook() {
    return 1;
}

CONFIGRET WINAPI LocateNode(PDEVINST node, DEVINSTID_W /*id*/, ULONG /*flags*/) {
    *node = 1;
    return CR_SUCCESS;
}

CONFIGRET WINAPI Reenumerate(DEVINST /*node*/, ULONG /*flags*/) {
    Write({.What = Deed::TreeRefreshed});
    if (Stage* const stage = Stage::Current()) {
        for (StageDevice& device : stage->Devices) {
            device.Present = true;
        }
    }
    return CR_SUCCESS;
}

DWORD WINAPI WaitForInstallations(DWORD /*timeout*/) {
    Write({.What = Deed::WaitedForSystem});
    return WAIT_OBJECT_0;
}

// Which services the machine of a user has is not known here.
SC_HANDLE WINAPI OpenServices(LPCWSTR /*machine*/, LPCWSTR /*database*/, DWORD /*access*/) {
    Write({.What = Deed::ServicesAdjusted});
    return FailWith<SC_HANDLE>(nullptr, ERROR_ACCESS_DENIED);
}

BOOL WINAPI EnumServices(SC_HANDLE /*manager*/, DWORD /*type*/, DWORD /*state*/,
                         LPENUM_SERVICE_STATUSW /*services*/, DWORD /*size*/, LPDWORD /*needed*/,
                         LPDWORD /*count*/, LPDWORD /*resume*/) {
    return FALSE;
}

SC_HANDLE WINAPI OpenOneService(SC_HANDLE /*manager*/, LPCWSTR /*name*/, DWORD /*access*/) {
    return nullptr;
}

BOOL WINAPI QueryService(SC_HANDLE /*service*/, LPQUERY_SERVICE_CONFIGW /*config*/, DWORD /*size*/,
                         LPDWORD /*needed*/) {
    return FALSE;
}

BOOL WINAPI OrderService(SC_HANDLE /*service*/, DWORD /*control*/, LPSERVICE_STATUS /*status*/) {
    return FALSE;
}

BOOL WINAPI ChangeService(SC_HANDLE /*service*/, DWORD /*type*/, DWORD /*start*/, DWORD /*error*/,
                          LPCWSTR /*path*/, LPCWSTR /*group*/, LPDWORD /*tag*/, LPCWSTR /*needs*/,
                          LPCWSTR /*account*/, LPCWSTR /*password*/, LPCWSTR /*displayName*/) {
    return FALSE;
}

BOOL WINAPI CloseService(SC_HANDLE /*service*/) {
    return TRUE;
}

INT_PTR WINAPI OpenDialog(HINSTANCE /*instance*/, LPCWSTR /*pattern*/, HWND /*parent*/,
                          DLGPROC /*procedure*/, LPARAM /*parameter*/) {
    Write({.What = Deed::WindowOpened});
    return 0;
}

HWND WINAPI Desktop() {
    return nullptr;
}

BOOL WINAPI SetItemText(HWND /*dialog*/, int /*item*/, LPCWSTR /*text*/) {
    return TRUE;
}

LONG WINAPI WindowLong(HWND /*window*/, int /*index*/) {
    return 0;
}

LONG WINAPI ChangeWindowLong(HWND /*window*/, int /*index*/, LONG /*value*/) {
    return 0;
}

HICON WINAPI Icon(HINSTANCE /*instance*/, LPCWSTR /*name*/) {
    return nullptr;
}

LRESULT WINAPI Send(HWND /*window*/, UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    return 0;
}

int WINAPI Box(HWND /*owner*/, LPCWSTR /*text*/, LPCWSTR /*caption*/, UINT /*type*/) {
    return IDOK;
}

} // namespace

} // namespace rehearsal

using namespace rehearsal;
REHEARSED_UNDECLARED(WriteLog, LogLine);
REHEARSED_UNDECLARED(SetHook, InstallTheHook);
REHEARSED_UNDECLARED(CleanHook, RemoveTheHook);
REHEARSED(CM_Locate_DevNodeW, LocateNode);
REHEARSED(CM_Reenumerate_DevNode, Reenumerate);
REHEARSED_UNDECLARED(CMP_WaitNoPendingInstallEvents, WaitForInstallations);
REHEARSED(OpenSCManagerW, OpenServices);
REHEARSED(EnumServicesStatusW, EnumServices);
REHEARSED(OpenServiceW, OpenOneService);
REHEARSED(QueryServiceConfigW, QueryService);
REHEARSED(ControlService, OrderService);
REHEARSED(ChangeServiceConfigW, ChangeService);
REHEARSED(CloseServiceHandle, CloseService);
REHEARSED(DialogBoxParamW, OpenDialog);
REHEARSED(GetDesktopWindow, Desktop);
REHEARSED(SetDlgItemTextW, SetItemText);
REHEARSED(GetWindowLongW, WindowLong);
REHEARSED(SetWindowLongW, ChangeWindowLong);
REHEARSED(LoadIconW, Icon);
REHEARSED(SendMessageW, Send);
REHEARSED(MessageBoxW, Box);
