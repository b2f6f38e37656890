#include "log_file.h"

#include "platform/owners.h"

#include <cwchar>
#include <iterator>

namespace quenlor {
namespace {

constexpr wchar_t LogName[] = L"Setup.log";
constexpr DWORD PathLength = MAX_PATH;

// Puts the log's name behind the last backslash of `path`. False when it does not fit.
bool ReplaceFileName(wchar_t* path) {
    wchar_t* const backslash = std::wcsrchr(path, L'\\');
    wchar_t* const name = backslash == nullptr ? path : backslash + 1;
    if (static_cast<std::size_t>(name - path) + std::size(LogName) > PathLength) {
        return false;
    }
    std::wmemcpy(name, LogName, std::size(LogName));
    return true;
}

bool AppendBesideExecutable(const char* bytes, std::size_t size) {
    wchar_t path[PathLength];
    const DWORD length = GetModuleFileNameW(nullptr, path, PathLength);
    return length != 0 && length < PathLength && ReplaceFileName(path) &&
           AppendToFile(path, bytes, size);
}

bool AppendInTempFolder(const char* bytes, std::size_t size) {
    wchar_t path[PathLength];
    const DWORD length = GetTempPathW(PathLength, path);
    return length != 0 && length < PathLength && ReplaceFileName(path) &&
           AppendToFile(path, bytes, size);
}

// Keeps appends of this process apart where the system's own append is not atomic. A mutex and no
// critical section: it frees itself when its thread is ended from outside in the middle of a line.
class AppendTurn {
public:
    explicit AppendTurn(HANDLE mutex) : mutex_(mutex) { WaitForSingleObject(mutex_, INFINITE); }
    ~AppendTurn() { ReleaseMutex(mutex_); }
    AppendTurn(const AppendTurn&) = delete;
    AppendTurn& operator=(const AppendTurn&) = delete;

private:
    HANDLE mutex_;
};

// Made while the library is loaded, when there is no second thread yet; lives until the process
// ends.
const HANDLE AppendMutex = CreateMutexW(nullptr, FALSE, nullptr);

} // namespace

bool AppendToFile(const wchar_t* path, const char* bytes, std::size_t size) {
    const AppendTurn turn(AppendMutex);
    // FILE_APPEND_DATA without FILE_WRITE_DATA: the system moves to the end and writes in one step.
    // Opened for each line, so that nothing waits in a buffer when the process dies, and so that
    // the file can be read, moved away or deleted in the middle of a run.
    const FileOwner file(CreateFileW(path, FILE_APPEND_DATA,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                     nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file && WriteFile(file.Get(), bytes, static_cast<DWORD>(size), &written, nullptr) != 0 &&
           written == size;
}

bool AppendToLog(const char* bytes, std::size_t size) {
    return AppendBesideExecutable(bytes, size) || AppendInTempFolder(bytes, size);
}

} // namespace quenlor
