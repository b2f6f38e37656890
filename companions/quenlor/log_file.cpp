#include "log_file.h"

#include "platform/owners.h"

namespace quenlor {
namespace {

constexpr int Attempts = 10;
constexpr DWORD AttemptInterval = 20; // milliseconds

// Made while the library is loaded, when there is no second thread yet; lives until the process
// ends. A mutex and no critical section: it frees itself when its thread is ended from outside in
// mid-line.
const HANDLE AppendMutex = CreateMutexW(nullptr, FALSE, nullptr);

// FILE_APPEND_DATA without FILE_WRITE_DATA: the system moves to the end and writes in one step. A
// link is opened itself and not followed.
FileOwner OpenForAppending(const wchar_t* path) {
    return FileOwner(CreateFileW(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT,
                                 nullptr));
}

// A scanner may hold a file for a moment right after it was written.
FileOwner OpenWhenFree(const wchar_t* path) {
    FileOwner file = OpenForAppending(path);
    for (int attempt = 0; attempt < Attempts && !file && GetLastError() == ERROR_SHARING_VIOLATION;
         ++attempt) {
        Sleep(AttemptInterval);
        file = OpenForAppending(path);
    }
    return file;
}

// The program runs elevated, and the log may lie where others can write: a link of theirs must not
// make it write into a file that only an administrator may change.
bool IsPlainFile(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION information;
    if (GetFileInformationByHandle(file, &information) == FALSE) {
        return false;
    }
    if ((information.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ||
        information.nNumberOfLinks > 1) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    return true;
}

} // namespace

AppendTurn::AppendTurn() {
    WaitForSingleObject(AppendMutex, INFINITE);
}

AppendTurn::~AppendTurn() {
    ReleaseMutex(AppendMutex);
}

bool AppendToFile(const wchar_t* path, const char* bytes, std::size_t size) {
    const AppendTurn turn;
    // Opened for each line, so that nothing waits in a buffer when the process dies, and so that
    // the file can be read, moved away or deleted in the middle of a run.
    const FileOwner file = OpenWhenFree(path);
    DWORD written = 0;
    return file && IsPlainFile(file.Get()) &&
           WriteFile(file.Get(), bytes, static_cast<DWORD>(size), &written, nullptr) != FALSE &&
           written == size;
}

void MoveAsideWhenLarge(const wchar_t* path, const wchar_t* asidePath) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (GetFileAttributesExW(path, GetFileExInfoStandard, &data) != FALSE &&
        (data.nFileSizeHigh != 0 || data.nFileSizeLow >= MostBytes)) {
        MoveFileExW(path, asidePath, MOVEFILE_REPLACE_EXISTING);
    }
}

} // namespace quenlor
