#include "common/paths.h"

#include "common/limits.h"
#include "common/text.h"
#include "platform/platform.h"

std::wstring ExecutablePath(std::size_t capacity) {
    // One more than announced: Windows XP leaves a cut path without its terminating zero.
    std::wstring buffer(capacity + 1, L'\0');
    GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(capacity));
    return Cut(buffer.c_str(), capacity);
}

std::wstring PathBesideExecutable(std::wstring_view name) {
    const std::wstring executable = ExecutablePath(PathCapacity);
    if (!Contains(executable, L"\\")) {
        return {};
    }
    return Cut(ReplaceAfterLast(executable, L'\\', name), PathCapacity);
}

bool IsAbsolutePath(std::wstring_view path) {
    return path.starts_with(L"\\\\") || (path.size() > 2 && path[1] == L':' && path[2] == L'\\');
}

std::wstring WindowsFolder(std::size_t capacity) {
    std::wstring buffer(capacity, L'\0');
    const UINT length = GetWindowsDirectoryW(buffer.data(), static_cast<UINT>(capacity));
    // A length beyond the buffer is the size that the system wants; the buffer then holds nothing.
    return length < capacity ? std::wstring(buffer.c_str()) : std::wstring();
}
