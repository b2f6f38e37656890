// The INF parser: the system's own, on copies of the machine's files.
#include "machine/call.h"
#include "machine/files/disk.h"
#include "machine/files/real_copies.h"

namespace {

using namespace machine;

// Lines are found through the parser's real handle, kept in the context.
bool IsOfOpenInf(State& state, const INFCONTEXT* line) {
    for (const auto& [value, handle] : state.Handles.All()) {
        if (handle.What == Kind::Inf && handle.Real == line->Inf) {
            return true;
        }
    }
    Misuse(state, "a line of a closed INF");
    return false;
}

// What the parser answered, with the last error that goes with it.
BOOL Answer(Call& call, BOOL answer) {
    return answer != FALSE ? call.Succeed(answer) : call.Real(answer);
}

// 0 when the file can be read.
DWORD ReadingError(const State& state, const std::wstring& path) {
    const FileEntry* file = state.Files.Find(path);
    if (file == nullptr) {
        return state.Files.ErrorOfMissing(path);
    }
    return file->IsFolder() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

// A text without any section is no INF. Wine takes it for one with a mistake in its first line.
void CorrectRefusal(State& state, LPCWSTR path, UINT* errorLine) {
    const DWORD error = GetLastError();
    const bool wrong = error == ERROR_EXPECTED_SECTION_NAME &&
                       ReadBytes(state, path).find('[') == std::string::npos;
    if (wrong && errorLine != nullptr) {
        *errorLine = 0;
    }
    SetLastError(wrong ? ERROR_WRONG_INF_STYLE : error);
}

BOOL WINAPI HookSetupGetInfInformationW(LPCVOID path, DWORD control, PSP_INF_INFORMATION result,
                                        DWORD size, PDWORD needed) {
    const auto* name = static_cast<const wchar_t*>(path);
    Call call("SetupGetInfInformationW", Counting::Always, {name, control, size}, Telling::Aside);
    if (call.Fails()) {
        return FALSE;
    }
    if (name == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (control != INFINFO_INF_NAME_IS_ABSOLUTE) {
        Misuse(call.Inside(), "SetupGetInfInformationW with a search control the machine lacks");
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (const DWORD error = ReadingError(call.Inside(), name); error != ERROR_SUCCESS) {
        return call.Fail(FALSE, error);
    }
    const BOOL told = InfInformation(ReadBytes(call.Inside(), name), result, size, needed);
    if (told == FALSE) {
        CorrectRefusal(call.Inside(), name, nullptr);
    }
    return Answer(call, told);
}

HINF WINAPI HookSetupOpenInfFileW(PCWSTR path, PCWSTR infClass, DWORD style, PUINT errorLine) {
    Call call("SetupOpenInfFileW", Counting::Always, {path, infClass, style}, Telling::Aside);
    if (call.Fails()) {
        return INVALID_HANDLE_VALUE;
    }
    if (path == nullptr) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_INVALID_PARAMETER);
    }
    if (const DWORD error = ReadingError(call.Inside(), path); error != ERROR_SUCCESS) {
        return call.Fail(INVALID_HANDLE_VALUE, error);
    }
    HINF inf = OpenInf(ReadBytes(call.Inside(), path), infClass, style, errorLine);
    if (inf == INVALID_HANDLE_VALUE) {
        CorrectRefusal(call.Inside(), path, errorLine);
    }
    return inf == INVALID_HANDLE_VALUE ? call.Real(inf)
                                       : call.Succeed(call.Inside().Handles.Open(Kind::Inf, inf));
}

VOID WINAPI HookSetupCloseInfFile(HINF inf) {
    Call call("SetupCloseInfFile", Counting::Never, {Named(inf)}, Telling::Aside);
    if (call.Fails()) {
        return;
    }
    State& state = call.Inside();
    const OpenHandle* open = state.Handles.Find(inf, Kind::Inf);
    if (open == nullptr) {
        Misuse(state, "SetupCloseInfFile on " + state.Handles.Name(inf));
        return;
    }
    state.Handles.Close(inf);
}

BOOL WINAPI HookSetupFindFirstLineW(HINF inf, PCWSTR section, PCWSTR key, PINFCONTEXT line) {
    Call call("SetupFindFirstLineW", Counting::Always, {Named(inf), section, key}, Telling::Aside);
    if (call.Fails()) {
        return FALSE;
    }
    const OpenHandle* open = call.Inside().Handles.Find(inf, Kind::Inf);
    if (open == nullptr) {
        Misuse(call.Inside(), "SetupFindFirstLineW on " + call.Inside().Handles.Name(inf));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    return Answer(call, SetupFindFirstLineW(open->Real, section, key, line));
}

BOOL WINAPI HookSetupFindNextLine(PINFCONTEXT line, PINFCONTEXT next) {
    Call call("SetupFindNextLine", Counting::Always, {}, Telling::Aside);
    if (call.Fails() || !IsOfOpenInf(call.Inside(), line)) {
        return FALSE;
    }
    return Answer(call, SetupFindNextLine(line, next));
}

BOOL WINAPI HookSetupGetLineTextW(PINFCONTEXT line, HINF inf, PCWSTR section, PCWSTR key,
                                  PWSTR buffer, DWORD size, PDWORD needed) {
    Call call("SetupGetLineTextW", Counting::Always, {Named(inf), Buffer(buffer), size},
              Telling::Aside);
    if (call.Fails() || (line != nullptr && !IsOfOpenInf(call.Inside(), line))) {
        return FALSE;
    }
    const OpenHandle* open = call.Inside().Handles.Find(inf, Kind::Inf);
    return Answer(call, SetupGetLineTextW(line, open == nullptr ? nullptr : open->Real, section,
                                          key, buffer, size, needed));
}

DWORD WINAPI HookSetupGetFieldCount(PINFCONTEXT line) {
    Call call("SetupGetFieldCount", Counting::Always, {}, Telling::Aside);
    if (call.Fails() || !IsOfOpenInf(call.Inside(), line)) {
        return 0;
    }
    return call.Real(SetupGetFieldCount(line));
}

BOOL WINAPI HookSetupGetStringFieldW(PINFCONTEXT line, DWORD index, PWSTR buffer, DWORD size,
                                     PDWORD needed) {
    Call call("SetupGetStringFieldW", Counting::Always, {index, Buffer(buffer), size},
              Telling::Aside);
    if (call.Fails() || !IsOfOpenInf(call.Inside(), line)) {
        return FALSE;
    }
    return Answer(call, SetupGetStringFieldW(line, index, buffer, size, needed));
}

} // namespace

MACHINE_HOOK(SetupGetInfInformationW, HookSetupGetInfInformationW);
MACHINE_HOOK(SetupOpenInfFileW, HookSetupOpenInfFileW);
MACHINE_HOOK(SetupCloseInfFile, HookSetupCloseInfFile);
MACHINE_HOOK(SetupFindFirstLineW, HookSetupFindFirstLineW);
MACHINE_HOOK(SetupFindNextLine, HookSetupFindNextLine);
MACHINE_HOOK(SetupGetLineTextW, HookSetupGetLineTextW);
MACHINE_HOOK(SetupGetFieldCount, HookSetupGetFieldCount);
MACHINE_HOOK(SetupGetStringFieldW, HookSetupGetStringFieldW);
