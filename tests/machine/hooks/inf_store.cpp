// The INF store: staging and uninstalling INFs.
#include "machine/hooks/inf_store.h"

#include "machine/call.h"
#include "machine/files/disk.h"
#include "machine/hooks/library_functions.h"
#include "machine/inf_text.h"

#include <algorithm>

namespace machine {

namespace {

std::wstring PnfOf(const std::wstring& inf) {
    return inf.substr(0, inf.rfind(L'.')) + L".PNF";
}

// Waits as long as the test wants this copy to take.
void TakeTime(State& state, int copy) {
    Store& store = state.InfStore;
    if (store.HangingCopies.contains(copy)) {
        state.Threads.Wait(
            "SetupCopyOEMInfW", [&store, copy] { return !store.HangingCopies.contains(copy); },
            std::nullopt);
    }
    if (const auto time = store.CopyTimes.find(copy); time != store.CopyTimes.end()) {
        state.Threads.Sleep("SetupCopyOEMInfW", static_cast<std::uint32_t>(time->second.count()));
    }
}

// 0 when the source may be staged in this style.
DWORD StagingError(const State& state, PCWSTR source, DWORD style) {
    if (!Exists(state, source)) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (!ReadInf(state, source)) {
        return ERROR_WRONG_INF_STYLE;
    }
    return (style & SP_COPY_REPLACEONLY) != 0 && !FindStaged(state, source) ? ERROR_FILE_NOT_FOUND
                                                                            : ERROR_SUCCESS;
}

// Tells the caller where the copy is; false when its buffer is too small.
bool TellPlace(const std::wstring& target, PWSTR destination, DWORD size, PDWORD needed,
               PWSTR* component) {
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(target.size() + 1);
    }
    if (destination == nullptr) {
        return true;
    }
    if (size < target.size() + 1) {
        return false;
    }
    std::copy_n(target.c_str(), target.size() + 1, destination);
    if (component != nullptr) {
        *component = destination + target.rfind(L'\\') + 1;
    }
    return true;
}

BOOL WINAPI HookSetupCopyOEMInfW(PCWSTR source, PCWSTR location, DWORD mediaType, DWORD style,
                                 PWSTR destination, DWORD size, PDWORD needed, PWSTR* component) {
    Call call("SetupCopyOEMInfW", Counting::Always,
              {source, location, mediaType, Hex(style), size});
    if (call.Fails()) {
        return FALSE;
    }
    if (source == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    State& state = call.Inside();
    TakeTime(state, ++state.InfStore.Copies);
    if (const DWORD error = StagingError(state, source, style); error != ERROR_SUCCESS) {
        return call.Fail(FALSE, error);
    }
    const bool wasThere = FindStaged(state, source).has_value();
    const std::wstring target = StoreFolder(state) + StageInf(state, source);
    if (!TellPlace(target, destination, size, needed, component)) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    if (wasThere && (style & SP_COPY_NOOVERWRITE) != 0) {
        return call.Fail(FALSE, ERROR_FILE_EXISTS);
    }
    if ((style & SP_COPY_DELETESOURCE) != 0) {
        RemoveFile(state, source);
    }
    return call.Succeed(TRUE);
}

// By a device that is plugged or only remembered.
bool InUse(const State& state, const std::wstring& path) {
    return std::any_of(state.Nodes.begin(), state.Nodes.end(), [&](const Node& node) {
        return !node.Description.Removed && SameText(node.Description.StoredInf, path);
    });
}

DWORD UninstallError(const State& state, const std::wstring& name, DWORD flags) {
    const std::wstring path = StoreFolder(state) + name;
    if (name.find(L'\\') != std::wstring::npos) {
        return ERROR_INVALID_PARAMETER;
    }
    if (name.empty() || !Exists(state, path)) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (!StartsWith(name, L"oem")) {
        return ERROR_NOT_AN_INSTALLED_OEM_INF;
    }
    if ((flags & SUOI_FORCEDELETE) == 0 && InUse(state, path)) {
        return ERROR_INF_IN_USE_BY_DEVICES;
    }
    return IsLocked(state, path) ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
}

void DeleteDriverFiles(State& state, const std::wstring& path) {
    const std::optional<InfContents> inf = ReadInf(state, path);
    for (const std::wstring& file : inf ? inf->Files : WideTexts{}) {
        RemoveFile(state, SystemFolder(state) + L"\\drivers\\" + file);
    }
}

BOOL WINAPI HookSetupUninstallOEMInfW(PCWSTR name, DWORD flags, PVOID) {
    Call call("SetupUninstallOEMInfW", Counting::Always, {name, Hex(flags)});
    if (call.Fails()) {
        return FALSE;
    }
    if (name == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    State& state = call.Inside();
    if (const DWORD error = UninstallError(state, name, flags); error != ERROR_SUCCESS) {
        return call.Fail(FALSE, error);
    }
    const std::wstring path = StoreFolder(state) + name;
    if (state.Windows.UninstallDeletesFiles) {
        DeleteDriverFiles(state, path);
    }
    RemoveFile(state, path);
    RemoveFile(state, PnfOf(path));
    state.InfStore.OriginalNames.erase(Lower(name));
    return call.Succeed(TRUE);
}

} // namespace

FARPROC FindStoreFunction(std::string_view name) {
    return name == "SetupUninstallOEMInfW" ? AddressOf(&HookSetupUninstallOEMInfW) : nullptr;
}

std::wstring StoreFolder(const State& state) {
    return state.WindowsFolder + L"\\INF\\";
}

std::optional<std::wstring> FindStaged(const State& state, const std::wstring& sourcePath) {
    const std::string bytes = ReadBytes(state, sourcePath);
    for (const std::wstring& path : InfsIn(state, StoreFolder(state))) {
        const std::wstring name = FileName(path);
        const auto original = state.InfStore.OriginalNames.find(Lower(name));
        const bool sameName = original == state.InfStore.OriginalNames.end() ||
                              SameText(original->second, FileName(sourcePath));
        if (StartsWith(name, L"oem") && ReadBytes(state, path) == bytes &&
            (sameName || state.Windows.EqualInfKeepsItsName)) {
            return name;
        }
    }
    return std::nullopt;
}

std::wstring StageInf(State& state, const std::wstring& sourcePath) {
    if (std::optional<std::wstring> known = FindStaged(state, sourcePath)) {
        return *std::move(known);
    }
    int number = 0;
    std::wstring name = L"oem0.inf";
    while (Exists(state, StoreFolder(state) + name)) {
        name = L"oem" + std::to_wstring(++number) + L".inf";
    }
    const std::wstring path = StoreFolder(state) + name;
    WriteBytes(state, path, ReadBytes(state, sourcePath));
    WriteBytes(state, PnfOf(path), "precompiled");
    state.InfStore.OriginalNames[name] = FileName(sourcePath);
    return name;
}

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupCopyOEMInfW, HookSetupCopyOEMInfW);
MACHINE_HOOK(SetupUninstallOEMInfW, HookSetupUninstallOEMInfW);
