// A library that somebody has left beside the program under the name of one of the system's. It
// notes that it was loaded, and is of no use.
#include <windows.h>

#include <cwchar>

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID /*reserved*/);

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH) {
        return TRUE;
    }
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(library, path, MAX_PATH);
    const HANDLE file = CreateFileW(L"C:\\planted.txt", FILE_APPEND_DATA, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    const wchar_t* const name = std::wcsrchr(path, L'\\');
    DWORD written = 0;
    if (name != nullptr) {
        char text[MAX_PATH] = {};
        const int length =
            WideCharToMultiByte(CP_UTF8, 0, name + 1, -1, text, MAX_PATH - 1, nullptr, nullptr);
        text[length - 1] = '\n';
        WriteFile(file, text, static_cast<DWORD>(length), &written, nullptr);
    }
    CloseHandle(file);
    return TRUE;
}
