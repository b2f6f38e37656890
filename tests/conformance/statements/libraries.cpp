// Libraries, version resources, the system's folders, the processor.
#include "conformance/statement.h"

#include <array>
#include <cwchar>

using namespace conformance;

namespace {

// The version block of the kernel file, as the program reads it.
struct KernelVersion {
    KernelVersion()
        : Read(GetFileVersionInfoW(L"ntoskrnl.exe", 0, static_cast<DWORD>(Block.size()),
                                   Block.data())) {}
    BOOL Query(const std::wstring& what) {
        Value = nullptr;
        Size = 77;
        Untouch();
        return VerQueryValueW(Block.data(), what.c_str(), &Value, &Size);
    }
    std::vector<unsigned char> Block = std::vector<unsigned char>(16384);
    BOOL Read;
    void* Value = nullptr;
    UINT Size = 0;
};

std::wstring SystemLibrary(const wchar_t* name) {
    std::array<wchar_t, MAX_PATH> folder{};
    GetSystemDirectoryW(folder.data(), MAX_PATH);
    return std::wstring(folder.data()) + L"\\" + name;
}

} // namespace

STATEMENT(P16, "LoadLibraryW", Tested, "UpdateInstall",
          "Loading a library that does not exist: 126") {
    return Refused(LoadLibraryW(L"nosuchlibrary.dll"), ERROR_MOD_NOT_FOUND);
}

STATEMENT(P17, "GetProcAddress", Tested, "UpdateInstall",
          "A function that the library does not have: 127") {
    const HMODULE library = LoadLibraryW(L"newdev.dll");
    Untouch();
    return Is(GetProcAddress(library, "NoSuchFunction") == nullptr) &&
           LastErrorIs(ERROR_PROC_NOT_FOUND);
}

STATEMENT(P18, "GetFileVersionInfoW", Tested, "GetOsName",
          "The version of a file that does not exist: 2, or 1812") {
    std::array<unsigned char, 64> block{};
    const std::wstring path = world.Folder() + L"none.exe";
    return Refused(
        GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()),
        {ERROR_FILE_NOT_FOUND, ERROR_RESOURCE_DATA_NOT_FOUND});
}

STATEMENT(P19, "GetFileVersionInfoW VerQueryValueW", Tested, "GetOsName",
          "A translation is language and code page: four bytes") {
    KernelVersion version;
    return Done(version.Read) && Done(version.Query(L"\\VarFileInfo\\Translation")) &&
           Equal(version.Size, 4U);
}

STATEMENT(P20, "VerQueryValueW", Tested, "GetOsName",
          "A text that the resource lacks: 1813, its length 0") {
    KernelVersion version;
    return Refused(version.Query(L"\\StringFileInfo\\00000000\\None"),
                   ERROR_RESOURCE_TYPE_NOT_FOUND) &&
           Equal(version.Size, 0U);
}

STATEMENT(Q01, "LoadLibraryExW LoadLibraryW", Documented, "UpdateInstall",
          "A library that was loaded by its path is the one that its name then finds") {
    const HMODULE byPath = LoadLibraryExW(SystemLibrary(L"newdev.dll").c_str(), nullptr,
                                          LOAD_WITH_ALTERED_SEARCH_PATH);
    return Done(static_cast<const void*>(byPath)) && Is(LoadLibraryW(L"NewDev.dll") == byPath);
}

STATEMENT(Q02, "LoadLibraryExW", Documented, "-", "A path that leads to no library: 126") {
    return Refused(LoadLibraryExW(SystemLibrary(L"nosuchlibrary.dll").c_str(), nullptr,
                                  LOAD_WITH_ALTERED_SEARCH_PATH),
                   ERROR_MOD_NOT_FOUND);
}

STATEMENT(Q03, "GetModuleHandleW", Documented, "CleanInf",
          "A library that the program was linked to is found without loading it") {
    return Done(static_cast<const void*>(GetModuleHandleW(L"SETUPAPI.DLL")));
}

STATEMENT(Q04, "GetModuleHandleW", Documented, "-", "One that is not loaded: 126") {
    return Refused(GetModuleHandleW(L"nosuchlibrary.dll"), ERROR_MOD_NOT_FOUND);
}

STATEMENT(Q05, "GetProcAddress SetupUninstallOEMInfW", Documented, "CleanInf",
          "setupapi.dll has the function that takes an INF out of the store") {
    return Is(GetProcAddress(GetModuleHandleW(L"SETUPAPI.DLL"), "SetupUninstallOEMInfW") !=
              nullptr);
}

STATEMENT(Q06, "FreeLibrary", Documented, "-",
          "A library that was loaded twice and freed once is still there") {
    const HMODULE library = LoadLibraryW(L"newdev.dll");
    LoadLibraryW(L"newdev.dll");
    return Done(FreeLibrary(library)) && Is(GetModuleHandleW(L"newdev.dll") == library);
}

STATEMENT(Q07, "VerQueryValueW", Documented, "GetOsName",
          "The product version can be asked for by language and code page") {
    KernelVersion version;
    version.Query(L"\\VarFileInfo\\Translation");
    std::array<wchar_t, 64> query{};
    const auto* const pair = static_cast<const WORD*>(version.Value);
    wsprintfW(query.data(), L"\\StringFileInfo\\%04x%04x\\ProductVersion", pair[0], pair[1]);
    return Done(version.Query(query.data())) &&
           Is(version.Size > 1 && *static_cast<const wchar_t*>(version.Value) != L'\0');
}

STATEMENT(Q10, "GetWindowsDirectoryW", Documented, "CleanInf",
          "The folder of Windows has no final backslash; its length is told without the zero") {
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetWindowsDirectoryW(folder.data(), MAX_PATH);
    const std::wstring text = folder.data();
    return Equal(length, text.size()) && Is(!text.empty() && text.back() != L'\\', Narrow(text));
}

STATEMENT(Q11, "GetWindowsDirectoryW", Documented, "-",
          "A buffer that is too small: the size that it must have, with the zero") {
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetWindowsDirectoryW(folder.data(), MAX_PATH);
    return Equal(GetWindowsDirectoryW(folder.data(), 2), length + 1);
}

STATEMENT(Q12, "GetSystemDirectoryW GetWindowsDirectoryW", Documented, "UpdateInstall",
          "The system folder is the folder system32 in that of Windows") {
    std::array<wchar_t, MAX_PATH> windows{};
    std::array<wchar_t, MAX_PATH> system{};
    GetWindowsDirectoryW(windows.data(), MAX_PATH);
    GetSystemDirectoryW(system.data(), MAX_PATH);
    return SameName(system.data(), std::wstring(windows.data()) + L"\\system32");
}

STATEMENT(Q13, "GetModuleFileNameW", Documented, "ReadConfigString",
          "The executable's own path is a full one; its length is told without the zero") {
    std::array<wchar_t, MAX_PATH> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
    const std::wstring text = path.data();
    return Equal(length, text.size()) &&
           Is(text.size() > 3 && text.find(L":\\") == 1, Narrow(text));
}

STATEMENT(Q14, "GetModuleFileNameW", Documented, "-",
          "A buffer that is too small is filled to its end, and its size is told") {
    std::array<wchar_t, 4> path{};
    return Equal(GetModuleFileNameW(nullptr, path.data(), 4), 4U);
}

STATEMENT(Q15, "GetSystemInfo", Documented, "MatchPlatformDecoration",
          "The processor is the one that the program was made for: x64 is 9") {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return Equal(info.wProcessorArchitecture, PROCESSOR_ARCHITECTURE_AMD64);
}

STATEMENT(Q16, "SetErrorMode", Documented, "-", "The mode before is told") {
    const UINT before = SetErrorMode(SEM_FAILCRITICALERRORS);
    const UINT mine = SetErrorMode(before);
    return Equal(mine, SEM_FAILCRITICALERRORS);
}

STATEMENT(Q17, "GetLastError SetLastError", Documented, "GetInfSectionText",
          "The last error is what was set last") {
    SetLastError(ERROR_NOT_READY);
    return Equal(GetLastError(), ERROR_NOT_READY);
}

STATEMENT(Q18, "GetCurrentProcess", Documented, "-",
          "The own process has a handle of its own: -1") {
    return Is(GetCurrentProcess() == INVALID_HANDLE_VALUE);
}

STATEMENT(Q19, "WideCharToMultiByte", Documented, "AdjustSerialServices",
          "Without a buffer it tells the bytes that the text needs, its zero among them") {
    return Equal(static_cast<unsigned>(
                     WideCharToMultiByte(CP_UTF8, 0, L"text", -1, nullptr, 0, nullptr, nullptr)),
                 5U);
}
