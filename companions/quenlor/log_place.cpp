#include "log_place.h"

#include "log_file.h"

#include "platform/platform.h"

#include <cwchar>
#include <iterator>

namespace quenlor {
namespace {

constexpr wchar_t LogName[] = L"Setup.log";
constexpr wchar_t OldLogName[] = L"Setup.old.log";
constexpr DWORD PathLength = MAX_PATH;

struct Place {
    DWORD(WINAPI* FindFolder)(wchar_t* path);
    // This process has written a line there.
    bool Used;
};

DWORD WINAPI FindExecutable(wchar_t* path) {
    return GetModuleFileNameW(nullptr, path, PathLength);
}

DWORD WINAPI FindTempFolder(wchar_t* path) {
    return GetTempPathW(PathLength, path);
}

// In the order of choice. Guarded by AppendTurn, as is what is chosen.
Place Places[] = {{FindExecutable, false}, {FindTempFolder, false}};
Place* Chosen = nullptr;

// Puts the name behind the last backslash of `path`. False when it does not fit.
bool ReplaceFileName(wchar_t* path, const wchar_t* name, std::size_t nameSize) {
    wchar_t* const backslash = std::wcsrchr(path, L'\\');
    wchar_t* const place = backslash == nullptr ? path : backslash + 1;
    if (static_cast<std::size_t>(place - path) + nameSize > PathLength) {
        return false;
    }
    std::wmemcpy(place, name, nameSize);
    return true;
}

bool FindPath(const Place& place, wchar_t* path, const wchar_t* name, std::size_t nameSize) {
    const DWORD length = place.FindFolder(path);
    return length != 0 && length < PathLength && ReplaceFileName(path, name, nameSize);
}

bool AppendAt(Place& place, const char* bytes, std::size_t size) {
    wchar_t path[PathLength];
    if (!FindPath(place, path, LogName, std::size(LogName))) {
        return false;
    }
    wchar_t oldPath[PathLength];
    if (!place.Used && FindPath(place, oldPath, OldLogName, std::size(OldLogName))) {
        MoveAsideWhenLarge(path, oldPath);
    }
    if (!AppendToFile(path, bytes, size)) {
        return false;
    }
    place.Used = true;
    Chosen = &place;
    return true;
}

} // namespace

bool AppendToLog(const char* bytes, std::size_t size) {
    const AppendTurn turn;
    if (Chosen != nullptr && AppendAt(*Chosen, bytes, size)) {
        return true;
    }
    const Place* const failed = Chosen;
    for (Place& place : Places) {
        if (&place != failed && AppendAt(place, bytes, size)) {
            return true;
        }
    }
    return false;
}

} // namespace quenlor
