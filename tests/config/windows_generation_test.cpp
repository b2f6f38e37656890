// Which Windows the kernel file says this is.
#include "config/windows_generation.h"

#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

std::wstring NameFor(Machine& m, const wchar_t* version, std::uint32_t code) {
    m.SetWindowsVersion(version);
    CHECK(GetOsVersionCode() == code);
    return GetOsName();
}

} // namespace

TEST_CASE("The version comes from the product version of the kernel file") {
    const Machine m;
    CHECK(GetOsVersionCode() == 69);
    CHECK(m.Journal() == Lines{"GetSystemDirectoryW(260)",
                               "LoadLibraryExW of version(C:\\Windows\\System32\\VERSION.dll, 0x8)",
                               "GetProcAddress of version(library1, GetFileVersionInfoW)",
                               "GetProcAddress of version(library1, VerQueryValueW)",
                               "GetFileVersionInfoW(ntoskrnl.exe, 0, 2600)",
                               "VerQueryValueW(VarFileInfo\\Translation)",
                               "VerQueryValueW(\\StringFileInfo\\040904b0\\ProductVersion)"});
}

TEST_CASE("Without the system's version functions the Windows is not known") {
    for (const char* call : {"GetSystemDirectoryW", "LoadLibraryExW of version"}) {
        Machine m;
        m.FailCall(call, 1, ERROR_MOD_NOT_FOUND);
        CHECK(GetOsName() == L"");
        CHECK(m.CallsOf("GetFileVersionInfoW") == Lines{});
        CHECK(GetOsName() == L"WIN7");
    }
    for (const int k : {1, 2}) {
        Machine m;
        m.FailCall("GetProcAddress of version", k, ERROR_PROC_NOT_FOUND);
        CHECK(GetOsName() == L"");
        CHECK(GetOsName() == L"WIN7");
    }
}

TEST_CASE("A version library that lies beside the program is not loaded") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\VERSION.dll", "planted");
    CHECK(GetOsName() == L"WIN7");
    CHECK(m.LoadedLibraries() == WideTexts{L"C:\\Windows\\System32\\VERSION.dll"});
}

TEST_CASE("Each kernel version has its code and its name") {
    Machine m;
    CHECK(NameFor(m, L"6.1.7601.17514", 69) == L"WIN7");
    CHECK(NameFor(m, L"6.2.9200.16384", 72) == L"WIN10");
    CHECK(NameFor(m, L"6.3.9600.16384", 73) == L"WIN10");
    CHECK(NameFor(m, L"10.0.19041.1", 73) == L"WIN10");
    CHECK(NameFor(m, L"5.2.3790.0", 68) == L"WINXP");
    CHECK(NameFor(m, L"6.0.6002.18005", 70) == L"VISTA");
    CHECK(NameFor(m, L"3.51", 16) == L"");
    CHECK(NameFor(m, L"6", 70) == L"VISTA");
}

TEST_CASE("A kernel file without a version resource is no known Windows") {
    Machine m;
    m.SetWindowsVersion(std::nullopt);
    CHECK(GetOsVersionCode() == 0);
    CHECK(GetOsName() == L"");
    CHECK(m.CallsOf("VerQueryValueW") == Lines{});
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A version resource without a translation is no known Windows") {
    Machine m;
    m.FailCall("VerQueryValueW", 1, ERROR_RESOURCE_TYPE_NOT_FOUND);
    CHECK(GetOsVersionCode() == 0);
    m.FailCall("VerQueryValueW", 2, ERROR_RESOURCE_TYPE_NOT_FOUND);
    CHECK(GetOsName() == L"");
}

TEST_CASE("A version resource without a product version is no known Windows") {
    Machine m;
    m.FailCall("VerQueryValueW", 2, ERROR_RESOURCE_TYPE_NOT_FOUND);
    CHECK(GetOsVersionCode() == 0);
    CHECK(m.CallsOf("VerQueryValueW").size() == 2);
}

TEST_CASE("An empty product version is code 64, which names no Windows") {
    Machine m;
    CHECK(NameFor(m, L"", 64) == L"");
}

TEST_CASE("The kernel file is read anew each time") {
    Machine m;
    CHECK(GetOsName() == L"WIN7");
    m.SetWindowsVersion(L"10.0.22631.1");
    CHECK(GetOsName() == L"WIN10");
    m.FailCallsFrom("GetFileVersionInfoW", 3, ERROR_FILE_NOT_FOUND);
    CHECK(GetOsName() == L"");
}
