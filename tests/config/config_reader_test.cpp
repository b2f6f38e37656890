// Setup.ini: the six sections that a key is looked up in.
#include "config/config_reader.h"

#include "common/limits.h"
#include "common/run_state.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

#include <array>

using namespace machine;

namespace {

constexpr std::array<const wchar_t*, 5> Versions{L"5.2.3790.0", L"6.0.6002.1", L"6.1.7601.17514",
                                                 L"10.0.19041.1", L"3.51"};

std::wstring Read(const std::wstring& key) {
    return ReadConfigString(L"ENUM", key, ConfigLineCapacity);
}

// An ini with one value for the key "K" in each of these sections.
std::wstring IniOf(const std::vector<std::pair<std::wstring, std::wstring>>& values) {
    std::wstring text;
    for (const auto& [section, value] : values) {
        text.append(L"[").append(section).append(L"]\r\nK=").append(value).append(L"\r\n");
    }
    return text;
}

const std::vector<std::pair<std::wstring, std::wstring>> SixSections{
    {L"ENUM.INSTALL.WIN7.NTx64", L"1"}, {L"ENUM.INSTALL.WIN7", L"2"}, {L"ENUM.INSTALL", L"3"},
    {L"ENUM.WIN7.NTx64", L"4"},         {L"ENUM.WIN7", L"5"},         {L"ENUM", L"6"}};

} // namespace

TEST_CASE("A text is looked up in six sections of the file beside the executable") {
    const Machine m;
    CHECK(Read(L"K") == L"");
    CHECK(m.Journal() ==
          Lines{"GetModuleFileNameW(null, 260)", "GetSystemDirectoryW(260)",
                "LoadLibraryExW of version(C:\\Windows\\System32\\VERSION.dll, 0x8)",
                "GetProcAddress of version(library1, GetFileVersionInfoW)",
                "GetProcAddress of version(library1, VerQueryValueW)",
                "GetFileVersionInfoW(ntoskrnl.exe, 0, 2600)",
                "VerQueryValueW(VarFileInfo\\Translation)",
                "VerQueryValueW(\\StringFileInfo\\040904b0\\ProductVersion)",
                "GetPrivateProfileStringW(ENUM.INSTALL.WIN7.NTx64, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM.INSTALL.WIN7, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM.INSTALL, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM.WIN7.NTx64, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM.WIN7, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM, K, 1024, D:\\Packet\\Setup.ini)"});
}

TEST_CASE("A number is looked up in the same six sections") {
    const Machine m;
    CHECK(ReadConfigInt(L"ENUM", L"K") == 0);
    CHECK(m.CallsOf("GetPrivateProfileIntW") ==
          Lines{"GetPrivateProfileIntW(ENUM.INSTALL.WIN7.NTx64, K, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileIntW(ENUM.INSTALL.WIN7, K, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileIntW(ENUM.INSTALL, K, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileIntW(ENUM.WIN7.NTx64, K, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileIntW(ENUM.WIN7, K, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileIntW(ENUM, K, D:\\Packet\\Setup.ini)"});
    CHECK(m.Log() == Lines{});
}

TEST_CASE("The lookup stops at the first section that has the key") {
    Machine m;
    m.WriteIni(L"[ENUM.INSTALL]\r\nK=3\r\n");
    CHECK(Read(L"K") == L"3");
    CHECK(m.CallsOf("GetPrivateProfileStringW").size() == 3);
    CHECK(ReadConfigInt(L"ENUM", L"K") == 3);
    CHECK(m.CallsOf("GetPrivateProfileIntW").size() == 3);
}

TEST_CASE("Of several sections the most specific one decides") {
    Machine m;
    std::vector<std::pair<std::wstring, std::wstring>> sections = SixSections;
    for (int expected = 1; expected <= 6; ++expected) {
        m.WriteIni(IniOf(sections));
        CHECK(Read(L"K") == std::to_wstring(expected));
        CHECK(ReadConfigInt(L"ENUM", L"K") == expected);
        sections.erase(sections.begin());
    }
}

TEST_CASE("A key in the plain section is found in every run mode and on every Windows") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=7\r\n");
    for (const wchar_t* version : Versions) {
        m.SetWindowsVersion(version);
        for (const std::uint8_t mode : {std::uint8_t{0}, std::uint8_t{1}}) {
            SetupMode = mode;
            CHECK(ReadConfigInt(L"ENUM", L"MAXCYCLE") == 7);
            CHECK(Read(L"MAXCYCLE") == L"7");
        }
    }
}

TEST_CASE("The section of the run mode outranks the section of the Windows generation") {
    Machine m;
    m.WriteIni(L"[ENUM.WIN7.NTx64]\r\nK=4\r\n[ENUM.INSTALL]\r\nK=3\r\n");
    CHECK(Read(L"K") == L"3");
    CHECK(ReadConfigInt(L"ENUM", L"K") == 3);
}

TEST_CASE("An empty text leaves the word to a less specific section") {
    Machine m;
    m.WriteIni(L"[ENUM.INSTALL]\r\nKEY=\r\n[ENUM]\r\nKEY=5\r\n");
    CHECK(Read(L"KEY") == L"5");
}

TEST_CASE("A number of -1 leaves the word to a less specific section") {
    Machine m;
    m.WriteIni(L"[ENUM.INSTALL.WIN7]\r\nKEY=-1\r\n[ENUM]\r\nKEY=3\r\n");
    CHECK(ReadConfigInt(L"ENUM", L"KEY") == 3);
}

TEST_CASE("A number of -1 in every section reads as 0") {
    Machine m;
    std::vector<std::pair<std::wstring, std::wstring>> sections = SixSections;
    for (auto& section : sections) {
        section.second = L"-1";
    }
    m.WriteIni(IniOf(sections));
    CHECK(ReadConfigInt(L"ENUM", L"K") == 0);
}

TEST_CASE("A number of 0 decides, unlike -1") {
    Machine m;
    m.WriteIni(L"[ENUM.INSTALL]\r\nK=0\r\n[ENUM]\r\nK=3\r\n");
    CHECK(ReadConfigInt(L"ENUM", L"K") == 0);
}

TEST_CASE("After the change to uninstalling the UNINSTALL sections apply") {
    Machine m;
    m.WriteIni(L"[S.INSTALL]\r\nK=1\r\n[S.UNINSTALL]\r\nK=2\r\n[S.UNINSTALL.WIN7]\r\nL=3\r\n");
    CHECK(ReadConfigInt(L"S", L"K") == 1);
    CHECK(ReadConfigInt(L"S", L"L") == 0);
    SetupMode = 0;
    CHECK(ReadConfigInt(L"S", L"K") == 2);
    CHECK(ReadConfigString(L"S", L"L", 200) == L"3");
}

TEST_CASE("On an unknown Windows the generation stays empty in the section names") {
    Machine m;
    m.SetWindowsVersion(std::nullopt);
    CHECK(Read(L"K") == L"");
    CHECK(m.CallsOf("GetPrivateProfileStringW") ==
          Lines{"GetPrivateProfileStringW(ENUM.INSTALL..NTx64, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM.INSTALL., K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM.INSTALL, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM..NTx64, K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM., K, 1024, D:\\Packet\\Setup.ini)",
                "GetPrivateProfileStringW(ENUM, K, 1024, D:\\Packet\\Setup.ini)"});
    m.WriteIni(L"[ENUM..NTx64]\r\nK=4\r\n[ENUM.]\r\nK=5\r\n");
    CHECK(Read(L"K") == L"4");
}

TEST_CASE("Every Windows generation has its own sections") {
    Machine m;
    m.WriteIni(L"[S.WINXP]\r\nK=1\r\n[S.VISTA]\r\nK=2\r\n[S.WIN7]\r\nK=3\r\n[S.WIN10]\r\nK=4\r\n"
               L"[S]\r\nK=5\r\n");
    std::vector<std::int32_t> values;
    for (const wchar_t* version : Versions) {
        m.SetWindowsVersion(version);
        values.push_back(ReadConfigInt(L"S", L"K"));
    }
    CHECK(values == std::vector<std::int32_t>{1, 2, 3, 4, 5});
}

TEST_CASE("The file beside the executable is read, wherever that is") {
    Machine m;
    m.WriteIni(L"[S]\r\nK=1\r\n");
    m.SetExecutable(L"E:\\Stick\\Setup.exe");
    CHECK(ReadConfigInt(L"S", L"K") == 0);
    m.WriteIni(L"[S]\r\nK=2\r\n");
    CHECK(ReadConfigInt(L"S", L"K") == 2);
}

TEST_CASE("Nothing is kept between two look-ups") {
    Machine m;
    m.WriteIni(L"[S]\r\nK=1\r\n");
    CHECK(ReadConfigInt(L"S", L"K") == 1);
    m.WriteIni(L"[S]\r\nK=20\r\n");
    CHECK(ReadConfigInt(L"S", L"K") == 20);
    m.SetWindowsVersion(L"10.0.19041.1");
    m.WriteIni(L"[S.WIN10]\r\nK=300\r\n");
    CHECK(ReadConfigInt(L"S", L"K") == 300);
}

TEST_CASE("Without Setup.ini every text is empty and every number 0") {
    const Machine m;
    CHECK(Read(L"K") == L"");
    CHECK(ReadConfigInt(L"INSTALL", L"MODE") == 0);
    CHECK_FALSE(ReadConfigSwitch(L"UI", L"NEEDUI"));
    CHECK(m.Log() == Lines{});
}

TEST_CASE("An empty Setup.ini is as good as none") {
    Machine m;
    m.WriteIniBytes("");
    CHECK(Read(L"K") == L"");
    CHECK(ReadConfigInt(L"INSTALL", L"MODE") == 0);
    m.WriteIni(L"");
    CHECK(Read(L"K") == L"");
    CHECK(ReadConfigInt(L"INSTALL", L"MODE") == 0);
}

TEST_CASE("A Setup.ini that is no ini at all reads as empty") {
    Machine m;
    std::string bytes;
    for (int i = 0; i < 4096; ++i) {
        bytes.push_back(static_cast<char>(i * 37));
    }
    m.WriteIniBytes(bytes);
    CHECK(Read(L"K") == L"");
    CHECK(ReadConfigInt(L"ENUM", L"K") == 0);
}

TEST_CASE("A Setup.ini in the system's code page is read like one in UTF-16") {
    Machine m;
    m.WriteIniBytes("[ENUM]\r\nK=plain text\r\nN=12\r\n");
    CHECK(Read(L"K") == L"plain text");
    CHECK(ReadConfigInt(L"ENUM", L"N") == 12);
    m.WriteIni(L"[ENUM]\r\nK=\x4E2D\x00E4\r\nN=12\r\n");
    CHECK(Read(L"K") == L"\x4E2D\x00E4");
    CHECK(ReadConfigInt(L"ENUM", L"N") == 12);
}

TEST_CASE("Section and key names match in any case") {
    Machine m;
    m.WriteIni(L"[enum.install.win7.ntX64]\r\nmaxcycle=9\r\n");
    CHECK(ReadConfigInt(L"ENUM", L"MAXCYCLE") == 9);
}

TEST_CASE("A text of 1,023 characters is read whole, a longer one is cut") {
    Machine m;
    for (const std::size_t length : {1023U, 1024U, 5000U}) {
        m.WriteIni(L"[ENUM]\r\nK=" + std::wstring(length, L'v') + L"\r\n");
        CHECK(Read(L"K") == std::wstring(1023, L'v'));
    }
}

TEST_CASE("A text is cut to the caller's buffer") {
    Machine m;
    m.WriteIni(L"[S]\r\nK=" + std::wstring(5000, L'v') + L"\r\nE=" + std::wstring(199, L'e') +
               L"\r\nF=" + std::wstring(200, L'f') + L"\r\n");
    CHECK(ReadConfigString(L"S", L"K", DeviceIdCapacity).size() == 199);
    CHECK(ReadConfigString(L"S", L"K", PathCapacity).size() == 259);
    CHECK(ReadConfigString(L"S", L"E", DeviceIdCapacity).size() == 199);
    CHECK(ReadConfigString(L"S", L"F", DeviceIdCapacity) == std::wstring(199, L'f'));
}

TEST_CASE("Negative and unreadable numbers are what the system reads them as") {
    Machine m;
    m.WriteIni(L"[S]\r\nN=-5\r\nT=abc\r\nU=12abc\r\nB= 7 \r\nL=2147483647\r\nM=-2147483648\r\n");
    CHECK(ReadConfigInt(L"S", L"N") == -5);
    CHECK(ReadConfigInt(L"S", L"T") == 0);
    CHECK(ReadConfigInt(L"S", L"U") == 12);
    CHECK(ReadConfigInt(L"S", L"B") == 7);
    CHECK(ReadConfigInt(L"S", L"L") == 2147483647);
    CHECK(ReadConfigInt(L"S", L"M") == -2147483647 - 1);
}

TEST_CASE("The number 4294967295 is the number -1, and so not set") {
    Machine m;
    m.WriteIni(L"[S.INSTALL]\r\nK=4294967295\r\n[S]\r\nK=3\r\n");
    CHECK(ReadConfigInt(L"S", L"K") == 3);
}

TEST_CASE("A number too large for any register still gives a number") {
    Machine m;
    m.WriteIni(L"[S]\r\nK=" + std::wstring(300, L'9') + L"\r\n");
    const std::wstring path = m.RealCopy(L"D:\\Packet\\Setup.ini");
    const UINT system = GetPrivateProfileIntW(L"S", L"K", 0, path.c_str());
    CHECK(ReadConfigInt(L"S", L"K") == (system == 0xFFFFFFFF ? 0 : static_cast<INT>(system)));
}

TEST_CASE("A section that cannot be read leaves the word to a less specific one") {
    Machine m;
    m.WriteIni(IniOf(SixSections));
    m.FailCall("GetPrivateProfileStringW", 1, ERROR_ACCESS_DENIED);
    m.FailCall("GetPrivateProfileIntW", 1, ERROR_ACCESS_DENIED);
    CHECK(Read(L"K") == L"2");
    CHECK(ReadConfigInt(L"ENUM", L"K") == 2);
}

TEST_CASE("When the executable's path is not known nothing is configured") {
    Machine m;
    m.WriteIni(L"[S]\r\nK=1\r\n");
    m.FailCallsFrom("GetModuleFileNameW", 1, ERROR_ACCESS_DENIED);
    CHECK(ReadConfigString(L"S", L"K", 200) == L"");
    CHECK(ReadConfigInt(L"S", L"K") == 0);
}

TEST_CASE("A switch is the low byte of its number") {
    Machine m;
    m.WriteIni(L"[S]\r\nA=1\r\nB=256\r\nC=257\r\nD=-2\r\nE=-256\r\nF=0\r\nG=255\r\nH=-1\r\n");
    CHECK(ReadConfigSwitch(L"S", L"A"));
    CHECK_FALSE(ReadConfigSwitch(L"S", L"B"));
    CHECK(ReadConfigSwitch(L"S", L"C"));
    CHECK(ReadConfigSwitch(L"S", L"D"));
    CHECK_FALSE(ReadConfigSwitch(L"S", L"E"));
    CHECK_FALSE(ReadConfigSwitch(L"S", L"F"));
    CHECK(ReadConfigSwitch(L"S", L"G"));
    CHECK_FALSE(ReadConfigSwitch(L"S", L"H"));
    CHECK_FALSE(ReadConfigSwitch(L"S", L"absent"));
}

TEST_CASE("Seconds become milliseconds of 32 bits, which wrap around") {
    CHECK(Milliseconds(std::int32_t{0}) == 0);
    CHECK(Milliseconds(std::int32_t{5}) == 5000);
    CHECK(Milliseconds(std::int32_t{4294967}) == 4294967000U);
    CHECK(Milliseconds(std::int32_t{4294968}) == 704);
    CHECK(Milliseconds(std::int32_t{-1}) == 4294966296U);
}
