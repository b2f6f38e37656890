// Libraries that the program loads, and the calls that come before its first line.
#include "machine/machine.h"
#include "support/doctest_support.h"

#include <array>

using namespace machine;

extern "C" {
extern decltype(&::LoadLibraryW) fake_LoadLibraryW;
extern decltype(&::LoadLibraryExW) fake_LoadLibraryExW;
extern decltype(&::GetProcAddress) fake_GetProcAddress;
extern decltype(&::GetModuleHandleW) fake_GetModuleHandleW;
extern decltype(&::GetSystemDirectoryW) fake_GetSystemDirectoryW;
extern decltype(&::SetErrorMode) fake_SetErrorMode;
extern decltype(&::FreeLibrary) fake_FreeLibrary;
}

namespace {

const WideTexts SystemNewDev = {L"C:\\Windows\\System32\\newdev.dll"};

HMODULE LoadByPath(const std::wstring& path) {
    return fake_LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

bool Has(HMODULE library, const char* function) {
    return fake_GetProcAddress(library, function) != nullptr;
}

} // namespace

TEST_CASE("A library that is loaded already is found by its name alone") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\newdev.dll", "planted");
    HMODULE library = LoadByPath(SystemNewDev.front());
    CHECK(library != nullptr);
    CHECK(fake_LoadLibraryW(L"NewDev.dll") == library);
    CHECK(fake_GetModuleHandleW(L"newdev") == library);
    CHECK(Has(library, "InstallSelectedDriver"));
    CHECK(m.LoadedLibraries() == SystemNewDev);
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A library asked for by name alone comes from beside the executable first") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\newdev.dll", "planted");
    HMODULE library = fake_LoadLibraryW(L"NewDev.dll");
    CHECK(m.LoadedLibraries() == WideTexts{L"D:\\Packet\\NewDev.dll"});
    CHECK_FALSE(Has(library, "InstallSelectedDriver"));
    CHECK(GetLastError() == ERROR_PROC_NOT_FOUND);
}

TEST_CASE("A library is loaded until it was freed as often as it was loaded") {
    Machine m;
    HMODULE library = fake_LoadLibraryW(L"NewDev.dll");
    fake_LoadLibraryW(L"newdev");
    fake_FreeLibrary(library);
    CHECK(m.Open("library") == 1);
    fake_FreeLibrary(library);
    CHECK(m.Open("library") == 0);
    CHECK(fake_FreeLibrary(library) == FALSE);
    CHECK(m.Misuses() == Lines{"FreeLibrary on closed library1"});
}

TEST_CASE("A library that does not exist, and a search that old systems do not know") {
    Machine m;
    CHECK(fake_LoadLibraryW(L"nothing.dll") == nullptr);
    CHECK(GetLastError() == ERROR_MOD_NOT_FOUND);
    CHECK(LoadByPath(L"C:\\Windows\\newdev.dll") == nullptr);
    CHECK(GetLastError() == ERROR_MOD_NOT_FOUND);
    constexpr DWORD SearchSystemOnly = 0x800;
    CHECK(fake_LoadLibraryExW(L"newdev.dll", nullptr, SearchSystemOnly) == nullptr);
    CHECK(GetLastError() == ERROR_INVALID_PARAMETER);
    CHECK(m.LoadedLibraries() == WideTexts{});
}

TEST_CASE("The version library's functions are the machine's, and count as settings") {
    Machine m;
    m.FailAnyCall(1, ERROR_ACCESS_DENIED);
    HMODULE library = LoadByPath(L"C:\\Windows\\System32\\VERSION.dll");
    const auto read = reinterpret_cast<decltype(&::GetFileVersionInfoW)>(
        reinterpret_cast<void*>(fake_GetProcAddress(library, "GetFileVersionInfoW")));
    CHECK(Has(library, "VerQueryValueW"));
    CHECK_FALSE(Has(library, "VerInstallFileW"));
    std::vector<char> block(4096);
    CHECK(read(L"ntoskrnl.exe", 0, 4096, block.data()) != FALSE);
    CHECK(read(L"nothing.exe", 0, 4096, block.data()) == FALSE);
    CHECK(m.CountedCalls() == 0);
}

TEST_CASE("The system's folder, whole and for a buffer that is too small") {
    Machine m;
    m.SetWindowsFolder(L"E:\\WinNT");
    std::array<wchar_t, 32> folder{};
    CHECK(fake_GetSystemDirectoryW(folder.data(), 32) == 17);
    CHECK(std::wstring(folder.data()) == L"E:\\WinNT\\System32");
    CHECK(fake_GetSystemDirectoryW(folder.data(), 17) == 18);
    CHECK(fake_GetSystemDirectoryW(nullptr, 0) == 18);
}

TEST_CASE("The error mode is kept") {
    Machine m;
    CHECK(m.ErrorMode() == 0);
    CHECK(fake_SetErrorMode(SEM_FAILCRITICALERRORS) == 0);
    CHECK(fake_SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX) ==
          SEM_FAILCRITICALERRORS);
    CHECK(m.ErrorMode() == (SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX));
}
