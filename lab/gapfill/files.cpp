// Files.
#include "journal.h"
#include "replacements.h"

// Windows: refuses to write over a file that is read-only or hidden, with 5. Wine 8: writes over
// it.
BOOL WINAPI FilledCopyFile(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
    const DWORD attributes =
        from == nullptr || to == nullptr ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(to);
    const bool guarded = attributes != INVALID_FILE_ATTRIBUTES &&
                         (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN)) != 0;
    if (guarded && failIfExists == FALSE && GetFileAttributesW(from) != INVALID_FILE_ATTRIBUTES) {
        Enter("CopyFileW", to);
        return Fail(ERROR_ACCESS_DENIED);
    }
    return CopyFileW(from, to, failIfExists);
}
