#include "platform/system_libraries.h"

#include <array>
#include <string>

HMODULE LoadSystemLibrary(const wchar_t* name) {
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetSystemDirectoryW(folder.data(), MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return nullptr;
    }
    const std::wstring path = std::wstring(folder.data()) + L"\\" + name;
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

HMODULE LoadSystemLibraryByName(const wchar_t* name) {
    return LoadSystemLibrary(name) == nullptr ? nullptr : LoadLibraryW(name);
}
