// Clock, processor, modules, processes.
#include "machine/call.h"

#include <algorithm>
#include <cstdarg>

namespace machine {
// newdev.dll's and setupapi.dll's entry points that are found by name.
FARPROC FindLibraryFunction(std::wstring_view library, std::string_view name);
} // namespace machine

namespace {

using namespace machine;

// 2026-01-05 08:00 UTC, when every machine is switched on.
constexpr std::uint64_t StartTime = 134'120'448'000'000'000ULL;

void WINAPI HookSleep(DWORD milliseconds) {
    Call call("Sleep", Counting::Never, {milliseconds});
    if (!call.Fails()) {
        call.Inside().Threads.Sleep("Sleep", milliseconds);
    }
}

void WINAPI HookGetSystemTimeAsFileTime(LPFILETIME time) {
    Call call("GetSystemTimeAsFileTime", Counting::Never, {}, Telling::Aside);
    const std::uint64_t passed =
        call.Fails() ? 0 : static_cast<std::uint64_t>(call.Inside().Threads.Clock()) * 10'000U;
    time->dwLowDateTime = static_cast<DWORD>(StartTime + passed);
    time->dwHighDateTime = static_cast<DWORD>((StartTime + passed) >> 32U);
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

UINT WINAPI HookGetWindowsDirectoryW(LPWSTR buffer, UINT size) {
    Call call("GetWindowsDirectoryW", Counting::Setting, {size}, Telling::Aside);
    if (call.Fails()) {
        return 0;
    }
    const std::wstring& folder = call.Inside().WindowsFolder;
    if (size <= folder.size()) {
        return static_cast<UINT>(folder.size() + 1);
    }
    std::copy_n(folder.c_str(), folder.size() + 1, buffer);
    return static_cast<UINT>(folder.size());
}

DWORD WINAPI HookGetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
    Call call("GetModuleFileNameW", Counting::Setting, {Named(module), size}, Telling::Aside);
    if (call.Fails()) {
        return 0;
    }
    const std::wstring& path = call.Inside().Executable;
    if (size > path.size()) {
        std::copy_n(path.c_str(), path.size() + 1, buffer);
        return static_cast<DWORD>(path.size());
    }
    // Windows XP leaves a cut path without its terminator; later ones put it.
    std::copy_n(path.c_str(), size, buffer);
    buffer[size - 1] = L'\0';
    return call.Fail(size, ERROR_INSUFFICIENT_BUFFER);
}

HMODULE WINAPI HookGetModuleHandleW(LPCWSTR name) {
    Call call("GetModuleHandleW", Counting::Always, {name});
    if (call.Fails()) {
        return nullptr;
    }
    if (name == nullptr) {
        return GetModuleHandleW(nullptr);
    }
    if (SameText(name, L"SETUPAPI.DLL") || SameText(name, L"SETUPAPI")) {
        // Not counted as loaded: the program is linked to it.
        return GetModuleHandleW(L"SETUPAPI.DLL");
    }
    return call.Fail(HMODULE{nullptr}, ERROR_MOD_NOT_FOUND);
}

HMODULE WINAPI HookLoadLibraryW(LPCWSTR name) {
    Call call("LoadLibraryW", Counting::Always, {name});
    if (call.Fails()) {
        return nullptr;
    }
    if (!SameText(FileName(name), L"NewDev.dll")) {
        return call.Fail(HMODULE{nullptr}, ERROR_MOD_NOT_FOUND);
    }
    return static_cast<HMODULE>(call.Inside().Handles.Open(Kind::Library, nullptr));
}

FARPROC WINAPI HookGetProcAddress(HMODULE module, LPCSTR name) {
    Call call("GetProcAddress", Counting::Always, {Named(module), name});
    if (call.Fails()) {
        return nullptr;
    }
    FARPROC function = nullptr;
    if (call.Inside().Handles.Find(module, Kind::Library) != nullptr) {
        function = FindLibraryFunction(L"newdev", name);
    } else if (module != nullptr && module == GetModuleHandleW(L"SETUPAPI.DLL")) {
        function = FindLibraryFunction(L"setupapi", name);
    } else {
        Misuse(call.Inside(), "GetProcAddress on " + call.Inside().Handles.Name(module));
    }
    return function != nullptr ? function : call.Fail(function, ERROR_PROC_NOT_FOUND);
}

BOOL WINAPI HookFreeLibrary(HMODULE module) {
    if (Machine::Current() == nullptr) {
        return FreeLibrary(module);
    }
    Call call("FreeLibrary", Counting::Never, {Named(module)}, Telling::Aside);
    if (call.Fails()) {
        return TRUE;
    }
    if (call.Inside().Handles.Find(module, Kind::Library) == nullptr) {
        Misuse(call.Inside(), "FreeLibrary on " + call.Inside().Handles.Name(module));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    call.Inside().Handles.Close(module);
    return TRUE;
}

BOOL WINAPI HookTerminateProcess(HANDLE process, UINT status) {
    Call call("TerminateProcess", Counting::Never, {Hex(status)});
    if (process == GetCurrentProcess() && !call.Fails()) {
        throw ProcessEnded{status};
    }
    return call.Fail(FALSE, ERROR_ACCESS_DENIED);
}

} // namespace

MACHINE_HOOK(Sleep, HookSleep);
MACHINE_HOOK(GetSystemTimeAsFileTime, HookGetSystemTimeAsFileTime);
MACHINE_HOOK(GetTickCount, HookGetTickCount);
MACHINE_HOOK(GetSystemInfo, HookGetSystemInfo);
MACHINE_HOOK(GetWindowsDirectoryW, HookGetWindowsDirectoryW);
MACHINE_HOOK(GetModuleFileNameW, HookGetModuleFileNameW);
MACHINE_HOOK(GetModuleHandleW, HookGetModuleHandleW);
MACHINE_HOOK(LoadLibraryW, HookLoadLibraryW);
MACHINE_HOOK(GetProcAddress, HookGetProcAddress);
MACHINE_HOOK(FreeLibrary, HookFreeLibrary);
MACHINE_HOOK(TerminateProcess, HookTerminateProcess);
