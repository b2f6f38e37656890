// Clock, processor, the system's folders, processes.
#include "machine/call.h"

#include <algorithm>
#include <utility>

namespace {

using namespace machine;

void WINAPI HookSleep(DWORD milliseconds) {
    Call call("Sleep", Counting::NeverFails, {milliseconds});
    if (!call.Fails()) {
        call.Inside().Threads.Sleep("Sleep", milliseconds);
    }
}

void WINAPI HookGetSystemTimeAsFileTime(LPFILETIME time) {
    Call call("GetSystemTimeAsFileTime", Counting::NeverFails, {}, Telling::Aside);
    *time = call.Fails() ? FILETIME{} : TimeNow(call.Inside());
}

DWORD WINAPI HookGetTickCount() {
    const State* state = Inside();
    return state == nullptr ? 0 : static_cast<DWORD>(state->Threads.Clock());
}

void WINAPI HookGetSystemInfo(LPSYSTEM_INFO info) {
    Call call("GetSystemInfo", Counting::Never, {}, Telling::Aside);
    *info = {};
    info->dwPageSize = 4096;
    info->dwNumberOfProcessors = 2;
    info->wProcessorArchitecture =
        call.Fails() ? WORD{PROCESSOR_ARCHITECTURE_AMD64} : call.Inside().Architecture;
}

// What both functions that tell a folder do with the caller's buffer.
UINT PutFolder(const std::wstring& folder, LPWSTR buffer, UINT size) {
    if (buffer == nullptr || size <= folder.size()) {
        return static_cast<UINT>(folder.size() + 1);
    }
    std::copy_n(folder.c_str(), folder.size() + 1, buffer);
    return static_cast<UINT>(folder.size());
}

UINT WINAPI HookGetWindowsDirectoryW(LPWSTR buffer, UINT size) {
    Call call("GetWindowsDirectoryW", Counting::Setting, {size}, Telling::Aside);
    return call.Fails() ? 0 : PutFolder(call.Inside().WindowsFolder, buffer, size);
}

UINT WINAPI HookGetSystemDirectoryW(LPWSTR buffer, UINT size) {
    Call call("GetSystemDirectoryW", Counting::Setting, {size}, Telling::Aside);
    return call.Fails() ? 0 : PutFolder(SystemFolder(call.Inside()), buffer, size);
}

UINT WINAPI HookSetErrorMode(UINT mode) {
    Call call("SetErrorMode", Counting::Never, {Hex(mode)}, Telling::Aside);
    return call.Fails() ? 0 : std::exchange(call.Inside().ErrorMode, mode);
}

BOOL WINAPI HookTerminateProcess(HANDLE process, UINT status) {
    Call call("TerminateProcess", Counting::Never, {Hex(status)});
    if (process == GetCurrentProcess() && !call.Fails()) {
        throw ProcessEnded{status};
    }
    return call.Fail(FALSE, process == nullptr ? ERROR_INVALID_HANDLE : ERROR_ACCESS_DENIED);
}

} // namespace

MACHINE_HOOK(Sleep, HookSleep);
MACHINE_HOOK(GetSystemTimeAsFileTime, HookGetSystemTimeAsFileTime);
MACHINE_HOOK(GetTickCount, HookGetTickCount);
MACHINE_HOOK(GetSystemInfo, HookGetSystemInfo);
MACHINE_HOOK(GetWindowsDirectoryW, HookGetWindowsDirectoryW);
MACHINE_HOOK(GetSystemDirectoryW, HookGetSystemDirectoryW);
MACHINE_HOOK(SetErrorMode, HookSetErrorMode);
MACHINE_HOOK(TerminateProcess, HookTerminateProcess);
