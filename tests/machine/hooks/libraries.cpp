// Modules: the executable itself, and libraries that the program loads by name or path.
#include "machine/call.h"
#include "machine/files/disk.h"
#include "machine/hooks/library_functions.h"

#include <algorithm>

namespace machine {

namespace {

struct Library {
    std::wstring Path;
    int Loads = 1;
};

Library& LibraryBehind(const OpenHandle& handle) {
    return *static_cast<Library*>(handle.Object.get());
}

bool IsVersion(const wchar_t* path) {
    return path != nullptr && SameText(FileName(path), L"version.dll");
}

// The version library is loaded to read a setting, and counts and is told as such, under names of
// its own: what a test says of the first LoadLibraryExW is about the installation.
Counting CountingOf(const wchar_t* path) {
    return IsVersion(path) ? Counting::Setting : Counting::Always;
}
Telling TellingOf(const wchar_t* path) {
    return IsVersion(path) ? Telling::Aside : Telling::Story;
}

bool IsSystemLibrary(const State& state, std::wstring_view path) {
    return SameText(path, SystemFolder(state) + L"\\newdev.dll") ||
           SameText(path, SystemFolder(state) + L"\\version.dll");
}

bool IsLibrary(const State& state, const std::wstring& path) {
    return IsSystemLibrary(state, path) || Exists(state, path);
}

std::wstring WithExtension(const std::wstring& name) {
    return FileName(name).find(L'.') == std::wstring::npos ? name + L".dll" : name;
}

// The loaded library of this name or full path, or null.
HMODULE FindLoaded(const State& state, const std::wstring& name) {
    const bool whole = name.find(L'\\') != std::wstring::npos;
    for (const auto& [value, handle] : state.Handles.All()) {
        if (handle.What == Kind::Library &&
            SameText(whole ? LibraryBehind(handle).Path : FileName(LibraryBehind(handle).Path),
                     name)) {
            return reinterpret_cast<HMODULE>(value);
        }
    }
    return nullptr;
}

// Where a name without a folder leads: beside the executable first, then to the system.
std::wstring SearchLibrary(const State& state, const std::wstring& name) {
    if (name.find(L'\\') != std::wstring::npos) {
        return name;
    }
    const std::wstring beside = Folder(state.Executable) + name;
    return Exists(state, beside) ? beside : SystemFolder(state) + L"\\" + name;
}

HMODULE Load(Call& call, const wchar_t* name) {
    State& state = call.Inside();
    if (name == nullptr) {
        return call.Fail(HMODULE{nullptr}, ERROR_INVALID_PARAMETER);
    }
    const std::wstring wanted = WithExtension(name);
    if (HMODULE loaded = FindLoaded(state, wanted); loaded != nullptr) {
        ++LibraryBehind(*state.Handles.FindAny(loaded)).Loads;
        return loaded;
    }
    const std::wstring path = SearchLibrary(state, wanted);
    if (!IsLibrary(state, path)) {
        return call.Fail(HMODULE{nullptr}, ERROR_MOD_NOT_FOUND);
    }
    return static_cast<HMODULE>(
        state.Handles.Open(Kind::Library, nullptr, std::make_shared<Library>(Library{path})));
}

HMODULE WINAPI HookLoadLibraryW(LPCWSTR name) {
    Call call("LoadLibraryW", CountingOf(name), {name}, TellingOf(name));
    return call.Fails() ? nullptr : Load(call, name);
}

HMODULE WINAPI HookLoadLibraryExW(LPCWSTR name, HANDLE file, DWORD flags) {
    Call call(IsVersion(name) ? "LoadLibraryExW of version" : "LoadLibraryExW", CountingOf(name),
              {name, Hex(flags)}, TellingOf(name));
    if (call.Fails()) {
        return nullptr;
    }
    // The later flags that narrow the search do not exist on every Windows that the program is for.
    if (file != nullptr || (flags & ~DWORD{LOAD_WITH_ALTERED_SEARCH_PATH}) != 0) {
        return call.Fail(HMODULE{nullptr}, ERROR_INVALID_PARAMETER);
    }
    return Load(call, name);
}

HMODULE WINAPI HookGetModuleHandleW(LPCWSTR name) {
    Call call("GetModuleHandleW", Counting::Always, {name});
    if (call.Fails()) {
        return nullptr;
    }
    if (name == nullptr) {
        return GetModuleHandleW(nullptr);
    }
    if (SameText(WithExtension(name), L"SETUPAPI.DLL")) {
        // Not counted as loaded: the program is linked to it.
        return GetModuleHandleW(L"SETUPAPI.DLL");
    }
    HMODULE loaded = FindLoaded(call.Inside(), WithExtension(name));
    return loaded != nullptr ? loaded : call.Fail(loaded, ERROR_MOD_NOT_FOUND);
}

// Only the system's own copies have the functions.
FARPROC FindIn(const State& state, const std::wstring& path, const char* name) {
    if (!IsSystemLibrary(state, path)) {
        return nullptr;
    }
    return IsVersion(path.c_str()) ? FindVersionFunction(name) : FindNewDevFunction(name);
}

FARPROC WINAPI HookGetProcAddress(HMODULE module, LPCSTR name) {
    const UnguardedScope unguarded;
    State* state = Inside();
    const OpenHandle* loaded =
        state == nullptr ? nullptr : state->Handles.Find(module, Kind::Library);
    const std::wstring path = loaded == nullptr ? std::wstring() : LibraryBehind(*loaded).Path;
    Call call(IsVersion(path.c_str()) ? "GetProcAddress of version" : "GetProcAddress",
              CountingOf(path.c_str()), {Named(module), name == nullptr ? "null" : name},
              TellingOf(path.c_str()));
    if (call.Fails() || name == nullptr) {
        return call.Fails() ? nullptr : call.Fail(FARPROC{nullptr}, ERROR_PROC_NOT_FOUND);
    }
    FARPROC function = nullptr;
    if (loaded != nullptr) {
        function = FindIn(*state, path, name);
    } else if (module != nullptr && module == GetModuleHandleW(L"SETUPAPI.DLL")) {
        function = FindStoreFunction(name);
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
    HandleTable& handles = call.Inside().Handles;
    const OpenHandle* loaded = handles.Find(module, Kind::Library);
    if (loaded == nullptr) {
        Misuse(call.Inside(), "FreeLibrary on " + handles.Name(module));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    if (--LibraryBehind(*loaded).Loads == 0) {
        handles.Close(module);
    }
    return TRUE;
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

} // namespace

WideTexts Machine::LoadedLibraries() const {
    WideTexts paths;
    for (const auto& [value, handle] : state_->Handles.All()) {
        if (handle.What == Kind::Library) {
            paths.push_back(LibraryBehind(handle).Path);
        }
    }
    return paths;
}

} // namespace machine

using namespace machine;
MACHINE_HOOK(GetModuleFileNameW, HookGetModuleFileNameW);
MACHINE_HOOK(GetModuleHandleW, HookGetModuleHandleW);
MACHINE_HOOK(LoadLibraryW, HookLoadLibraryW);
MACHINE_HOOK(LoadLibraryExW, HookLoadLibraryExW);
MACHINE_HOOK(GetProcAddress, HookGetProcAddress);
MACHINE_HOOK(FreeLibrary, HookFreeLibrary);
