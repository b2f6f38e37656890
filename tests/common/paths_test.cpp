// Where the program's files and the system's folders are.
#include "common/paths.h"

#include "common/limits.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

TEST_CASE("The executable's path is asked for with the caller's buffer size") {
    Machine m;
    CHECK(ExecutablePath(PathCapacity) == L"D:\\Packet\\Setup.exe");
    CHECK(ExecutablePath(ConfigLineCapacity) == L"D:\\Packet\\Setup.exe");
    CHECK(m.Journal() == Lines{"GetModuleFileNameW(null, 260)", "GetModuleFileNameW(null, 1024)"});
}

TEST_CASE("A path of 259 characters fits, a longer one is cut") {
    Machine m;
    const std::wstring fits = L"D:\\" + std::wstring(256, L'f');
    m.SetExecutable(fits);
    CHECK(ExecutablePath(PathCapacity) == fits);
    m.SetExecutable(fits + L"\\Setup.exe");
    CHECK(ExecutablePath(PathCapacity) == fits);
    CHECK(ExecutablePath(ConfigLineCapacity) == fits + L"\\Setup.exe");
}

TEST_CASE("The executable's path is empty when the system does not tell it") {
    Machine m;
    m.FailCall("GetModuleFileNameW", 1, ERROR_NOT_ENOUGH_MEMORY);
    CHECK(ExecutablePath(PathCapacity) == L"");
}

TEST_CASE("Files beside the executable are found from its own path") {
    Machine m;
    CHECK(PathBesideExecutable(L"Setup.ini") == L"D:\\Packet\\Setup.ini");
    m.SetExecutable(L"E:\\Setup.exe");
    CHECK(PathBesideExecutable(L"Lang.ini") == L"E:\\Lang.ini");
    m.SetExecutable(L"\\\\server\\share\\a.b\\Setup.exe");
    CHECK(PathBesideExecutable(L"x") == L"\\\\server\\share\\a.b\\x");
}

TEST_CASE("A path beside the executable has at most 259 characters") {
    Machine m;
    const std::wstring folder = L"D:\\" + std::wstring(245, L'f') + L"\\";
    m.SetExecutable(folder + L"Setup.exe");
    CHECK(PathBesideExecutable(std::wstring(10, L'n')).size() == 259);
    CHECK(PathBesideExecutable(std::wstring(11, L'n')) == folder + std::wstring(10, L'n'));
}

TEST_CASE("Without the executable's folder there is no path beside it") {
    Machine m;
    m.SetExecutable(L"Setup.exe");
    CHECK(PathBesideExecutable(L"Setup.ini") == L"");
    m.SetExecutable(L"");
    CHECK(PathBesideExecutable(L"Setup.ini") == L"");
    m.FailCallsFrom("GetModuleFileNameW", 1, ERROR_ACCESS_DENIED);
    CHECK(PathBesideExecutable(L"Setup.ini") == L"");
}

TEST_CASE("The Windows folder comes without a final backslash") {
    Machine m;
    CHECK(WindowsFolder(PathCapacity) == L"C:\\Windows");
    m.SetWindowsFolder(L"E:\\WINNT");
    CHECK(WindowsFolder(PathCapacity) == L"E:\\WINNT");
    CHECK(m.Journal() == Lines{"GetWindowsDirectoryW(260)", "GetWindowsDirectoryW(260)"});
}

TEST_CASE("A Windows folder that does not fit is none") {
    const Machine m;
    CHECK(WindowsFolder(11) == L"C:\\Windows");
    CHECK(WindowsFolder(10) == L"");
    CHECK(WindowsFolder(1) == L"");
}

TEST_CASE("The Windows folder is empty when the system does not tell it") {
    Machine m;
    m.FailCall("GetWindowsDirectoryW", 1, ERROR_ACCESS_DENIED);
    CHECK(WindowsFolder(PathCapacity) == L"");
}
