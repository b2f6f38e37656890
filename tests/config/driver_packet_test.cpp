// The driver packet's folder and its files.
#include "config/driver_packet.h"

#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

const std::wstring Folder7 = L"D:\\Packet\\WIN7\\";

std::wstring DriverDirOn(Machine& m, std::optional<std::wstring> version) {
    m.SetWindowsVersion(std::move(version));
    return GetDriverDir();
}

} // namespace

TEST_CASE("On Windows 7 the packet lies in WIN7") {
    const Machine m;
    CHECK(GetDriverDir() == L"D:\\Packet\\WIN7\\");
    CHECK(m.Log() == Lines{"GetDriverDir: Get system WIN7\tbit 64"});
}

TEST_CASE("On Windows 8, 8.1 and 10 the packet lies in WIN10, without the bitness") {
    Machine m;
    CHECK(DriverDirOn(m, L"6.2.9200.16384") == L"D:\\Packet\\WIN10\\");
    CHECK(DriverDirOn(m, L"6.3.9600.16384") == L"D:\\Packet\\WIN10\\");
    CHECK(DriverDirOn(m, L"10.0.19041.1") == L"D:\\Packet\\WIN10\\");
    CHECK(m.Log() == Lines(3, "GetDriverDir: Get system WIN10\tbit 64"));
}

TEST_CASE("On Vista and XP the packet's folder carries the bitness") {
    Machine m;
    CHECK(DriverDirOn(m, L"6.0.6002.18005") == L"D:\\Packet\\VISTA64\\");
    CHECK(DriverDirOn(m, L"5.2.3790.0") == L"D:\\Packet\\WINXP64\\");
    CHECK(m.Log() == Lines{"GetDriverDir: Get system VISTA\tbit 64",
                           "GetDriverDir: Get system WINXP\tbit 64"});
}

TEST_CASE("On an unknown Windows the packet's folder is the bitness alone") {
    Machine m;
    CHECK(DriverDirOn(m, std::nullopt) == L"D:\\Packet\\64\\");
    CHECK(m.Log() == Lines{"GetDriverDir: Get system \tbit 64"});
}

TEST_CASE("The packet's folder has at most 259 characters") {
    Machine m;
    m.SetExecutable(L"D:\\" + std::wstring(252, L'f') + L"\\S");
    CHECK(GetDriverDir().size() == 259);
    m.SetExecutable(L"D:\\" + std::wstring(300, L'f') + L"\\Setup.exe");
    CHECK(GetDriverDir() == L"D:\\WIN7\\");
}

TEST_CASE("Without the executable's folder there is no packet, but the line is logged") {
    Machine m;
    m.FailCall("GetModuleFileNameW", 1, ERROR_ACCESS_DENIED);
    CHECK(GetDriverDir() == L"");
    m.SetExecutable(L"Setup.exe");
    CHECK(GetDriverDir() == L"");
    CHECK(m.Log() == Lines(2, "GetDriverDir: Get system WIN7\tbit 64"));
}

TEST_CASE("The packet's files are listed with their full paths") {
    Machine m;
    m.WriteText(Folder7 + L"b.inf", L"b");
    m.WriteText(Folder7 + L"A.INF", L"a");
    m.WriteText(Folder7 + L"c.sys", L"c");
    TextList files{L"old"};
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files == TextList{Folder7 + L"A.INF", Folder7 + L"b.inf"});
    CHECK(m.Journal() == Lines{"FindFirstFileW(D:\\Packet\\WIN7\\*.INF)", "FindNextFileW(find1)",
                               "FindNextFileW(find1)", "FindClose(find1)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("The packet's files are listed in the file system's order") {
    Machine m;
    m.WriteText(Folder7 + L"a.inf", L"");
    m.WriteText(Folder7 + L"b.inf", L"");
    m.WriteText(Folder7 + L"c.inf", L"");
    m.SetListingOrder(Folder7, {L"c.inf", L"a.inf"});
    TextList files;
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files == TextList{Folder7 + L"c.inf", Folder7 + L"a.inf", Folder7 + L"b.inf"});
}

TEST_CASE("A folder whose name matches is listed like a file") {
    Machine m;
    m.MakeFolder(Folder7 + L"old.inf");
    m.WriteText(Folder7 + L"z.inf", L"");
    TextList files;
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files == TextList{Folder7 + L"old.inf", Folder7 + L"z.inf"});
}

TEST_CASE("The entries for the folder itself are listed when the pattern takes them") {
    Machine m;
    m.MakeFolder(Folder7);
    TextList files;
    CHECK(FindDriverPacketFiles(Folder7, L"*", files));
    CHECK(files == TextList{Folder7 + L".", Folder7 + L".."});
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files == TextList{});
}

TEST_CASE("A missing packet folder cannot be listed, and the list is cleared all the same") {
    Machine m;
    TextList files{L"old"};
    CHECK_FALSE(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(GetLastError() == ERROR_PATH_NOT_FOUND);
    CHECK(files == TextList{});
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A packet folder without a match gives true and an empty list") {
    Machine m;
    m.WriteText(Folder7 + L"readme.txt", L"");
    TextList files{L"old"};
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files == TextList{});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("Without a folder or a pattern nothing is listed and the list stays") {
    Machine m;
    TextList files{L"old"};
    CHECK_FALSE(FindDriverPacketFiles(L"", L"*.INF", files));
    CHECK_FALSE(FindDriverPacketFiles(Folder7, L"", files));
    CHECK(files == TextList{L"old"});
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("Only the error 'file not found' means that there is no match") {
    Machine m;
    TextList files{L"old"};
    m.FailCall("FindFirstFileW", 1, ERROR_FILE_NOT_FOUND);
    m.FailCall("FindFirstFileW", 2, ERROR_ACCESS_DENIED);
    m.FailCall("FindFirstFileW", 3, ERROR_NO_MORE_FILES);
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    files = {L"old"};
    CHECK_FALSE(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files == TextList{});
    CHECK_FALSE(FindDriverPacketFiles(Folder7, L"*.INF", files));
}

TEST_CASE("A listing that breaks off is what was listed until then") {
    Machine m;
    for (const wchar_t* name : {L"a.inf", L"b.inf", L"c.inf"}) {
        m.WriteText(Folder7 + name, L"");
    }
    m.FailCall("FindNextFileW", 2, ERROR_ACCESS_DENIED);
    TextList files;
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files == TextList{Folder7 + L"a.inf", Folder7 + L"b.inf"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A packet of 100 INFs is listed whole") {
    Machine m;
    for (int number = 0; number < 100; ++number) {
        m.WriteText(Folder7 + L"m" + std::to_wstring(number) + L".inf", L"");
    }
    TextList files;
    CHECK(FindDriverPacketFiles(Folder7, L"*.INF", files));
    CHECK(files.size() == 100);
}

TEST_CASE("Paths of listed files are whole, also those that no function of Windows takes") {
    Machine m;
    const std::wstring folder = L"D:\\" + std::wstring(120, L'f') + L"\\" + std::wstring(118, L'g');
    m.WriteText(folder + L"\\" + std::wstring(20, L'n') + L".inf", L"");
    TextList files;
    CHECK(FindDriverPacketFiles(folder + L"\\", L"*.INF", files));
    REQUIRE(files.size() == 1);
    CHECK(files[0] == folder + L"\\" + std::wstring(20, L'n') + L".inf");
}
