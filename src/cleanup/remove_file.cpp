#include "cleanup/remove_file.h"

#include "common/limits.h"
#include "common/paths.h"
#include "inf/driver_files.h"
#include "platform/platform.h"

namespace {

bool DeleteAnyFile(const std::wstring& path) {
    if (path.size() >= PathCapacity) {
        // A cut path would name another file.
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    // A read-only file counts as well; if its attributes cannot be set, deleting it tells why.
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    return DeleteFileW(path.c_str()) != FALSE;
}

// A path that is not absolute would name a file in whatever folder the program was started from:
// for the program there is no such file.
bool IsMissing(const std::wstring& path) {
    return !IsAbsolutePath(path) || (path.size() < PathCapacity &&
                                     GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES);
}

} // namespace

void DeleteFileWithLog(const std::wstring& path) {
    if (IsMissing(path)) {
        WriteLog(L"RemoveFile: File %s not exist", path.c_str());
    } else if (DeleteAnyFile(path)) {
        WriteLog(L"RemoveFile: File %s was deleted successfully", path.c_str());
    } else {
        WriteLog(L"RemoveFile: Error in deleting file : %s, error code 0x%08X", path.c_str(),
                 GetLastError());
    }
}

std::wstring PrecompiledTwin(const std::wstring& infPath) {
    if (!Contains(AfterLast(infPath, L'\\'), L".")) {
        return infPath + L".PNF";
    }
    return ReplaceAfterLast(infPath, L'.', L"PNF");
}

bool RemoveFile(const std::wstring& infPath) {
    DriverFileList files;
    if (!GetDriverFileList(infPath, files)) {
        return false;
    }
    for (const auto& [folder, name] : files) {
        DeleteFileWithLog(folder + name);
    }
    return true;
}
