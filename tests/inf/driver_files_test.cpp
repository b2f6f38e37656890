// An INF's class and the files that it copies.
#include "inf/driver_files.h"

#include "inf/inf_files.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

const std::wstring Models = L"[Manufacturer]\r\nMaker=Models\r\n[Models]\r\nd=Install,ID\r\n";
const std::wstring Drivers = L"C:\\Windows\\SYSTEM32\\DRIVERS\\";

DriverFileList FilesOf(const std::wstring& sections) {
    Machine m;
    DriverFileList entries{{L"old", L"old"}};
    CHECK(GetDriverFileList(AddSections(m, sections), entries));
    CHECK(m.Log() == Lines{});
    CHECK(m.LeakSummary() == "");
    return entries;
}

std::wstring DestinationOf(const std::wstring& sections, const std::wstring& before = {}) {
    Machine m;
    std::wstring folder = before;
    CHECK(GetDestinationDir(AddSections(m, sections), L"DrvCopy", folder));
    return folder;
}

std::wstring ClassOf(const std::wstring& versionLines) {
    Machine m;
    std::wstring className = L"old";
    CHECK(GetInfClassName(AddSections(m, versionLines), className));
    return className;
}

// The status that the process ended with; 0 when it went on. No log line is written either way.
template <typename Run>
DWORD StatusOf(const Machine& m, Run run) {
    DWORD status = 0;
    try {
        run();
    } catch (const ProcessEnded& end) {
        status = end.Status;
    }
    CHECK(m.Log() == Lines{});
    return status;
}

// Lets the parser refuse the first value of the last line that the next reading reads; the journal
// must show one such reading.
void RefuseLastValue(Machine& m) {
    const int calls = static_cast<int>(m.CallsOf("SetupGetStringFieldW").size());
    m.FailCall("SetupGetStringFieldW",
               calls + LastCall(m, "SetupGetStringFieldW", "SetupGetStringFieldW(1, null, 0)"),
               ERROR_INVALID_PARAMETER);
}

} // namespace

TEST_CASE("The class of an INF is upper-cased") {
    CHECK(ClassOf(L"Class=Ports\r\n") == L"PORTS");
    CHECK(ClassOf(L"class=\"M\x00F6"
                  L"dem\"\r\n") == L"M\x00F6"
                                   L"DEM");
}

TEST_CASE("An INF without a class has an empty one") {
    CHECK(ClassOf(L"ClassGUID={4d36e978-e325-11ce-bfc1-08002be10318}\r\n") == L"");
    CHECK(ClassOf(L"Class=\r\n") == L"");
}

TEST_CASE("Of two classes the first counts") {
    CHECK(ClassOf(L"Class=Modem\r\nClass=Ports\r\n") == L"MODEM");
}

TEST_CASE("An INF that cannot be read has no class, and the old one is gone") {
    const Machine m;
    std::wstring className = L"old";
    CHECK_FALSE(GetInfClassName(InfPath, className));
    CHECK(className.empty());
    className = L"old";
    CHECK_FALSE(GetInfClassName(L"", className));
    CHECK(className.empty());
}

TEST_CASE("A class entry without a value ends the process") {
    Machine m;
    const std::wstring path = AddSections(m, L"Class=Ports\r\n");
    std::wstring className;
    REQUIRE(GetInfClassName(path, className));
    RefuseLastValue(m);
    CHECK(StatusOf(m, [&] { GetInfClassName(path, className); }) == 0xC0000417);
}

TEST_CASE("Without an entry of its own a copy section goes to the default folder") {
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDefaultDestDir = 12\r\n") == Drivers);
}

TEST_CASE("A copy section's own entry outranks the default one, in any case") {
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDefaultDestDir=12\r\nDRVCOPY=11\r\n") ==
          L"C:\\Windows\\SYSTEM32\\");
}

TEST_CASE("Folder 10 is the Windows folder and a subfolder") {
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy = 10,System32\\Drivers\r\n") ==
          L"C:\\Windows\\System32\\Drivers\\");
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy = 10,\r\n") == L"C:\\Windows\\\\");
}

TEST_CASE("A known folder replaces what was there, another number is appended to it") {
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy=12\r\n", L"before") == Drivers);
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy=13\r\n", L"before") == L"before13");
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy=13\r\n") == L"13");
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy=\r\n", L"before") == L"before");
}

TEST_CASE("A destination folder has at most 259 characters") {
    const std::wstring tail(300, L'f');
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy=10," + tail + L"\r\n") ==
          (L"C:\\Windows\\" + tail).substr(0, 259));
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy=13\r\n", std::wstring(258, L'b')) ==
          std::wstring(258, L'b') + L"1");
}

TEST_CASE("A subfolder of the folders 11 and 12 is not looked at") {
    CHECK(DestinationOf(L"[DestinationDirs]\r\nDrvCopy=12,UMDF\r\n") == Drivers);
}

TEST_CASE("Without [DestinationDirs] the folder stays as it was") {
    CHECK(DestinationOf(L"[S]\r\na=1\r\n") == L"");
    CHECK(DestinationOf(L"[S]\r\na=1\r\n", L"before") == L"before");
}

TEST_CASE("Folders lie in the Windows folder of this machine") {
    Machine m;
    m.SetWindowsFolder(L"E:\\WINNT");
    std::wstring folder;
    CHECK(GetDestinationDir(AddSections(m, L"[DestinationDirs]\r\nDrvCopy=12\r\n"), L"DrvCopy",
                            folder));
    CHECK(folder == L"E:\\WINNT\\SYSTEM32\\DRIVERS\\");
    CHECK(m.CallsOf("GetWindowsDirectoryW") == Lines{"GetWindowsDirectoryW(260)"});
}

TEST_CASE("The folder of an INF that cannot be read is not found") {
    Machine m;
    std::wstring folder = L"before";
    CHECK_FALSE(GetDestinationDir(L"", L"DrvCopy", folder));
    CHECK_FALSE(GetDestinationDir(L"D:\\none.inf", L"DrvCopy", folder));
    const std::wstring path = AddSections(m, L"[DestinationDirs]\r\nDefaultDestDir=12\r\n");
    m.FailCall("SetupOpenInfFileW", 2, ERROR_ACCESS_DENIED);
    CHECK_FALSE(GetDestinationDir(path, L"DrvCopy", folder));
    CHECK(folder == L"before");
}

TEST_CASE("Folder 10 without a subfolder ends the process") {
    Machine m;
    const std::wstring path = AddSections(m, L"[DestinationDirs]\r\nDrvCopy=10\r\n");
    std::wstring folder;
    CHECK(StatusOf(m, [&] { GetDestinationDir(path, L"DrvCopy", folder); }) == 0xC0000417);
}

TEST_CASE("A folder entry without a number ends the process") {
    Machine m;
    const std::wstring path = AddSections(m, L"[DestinationDirs]\r\nDrvCopy=13\r\n");
    std::wstring folder;
    REQUIRE(GetDestinationDir(path, L"DrvCopy", folder));
    RefuseLastValue(m);
    CHECK(StatusOf(m, [&] { GetDestinationDir(path, L"DrvCopy", folder); }) == 0xC0000417);
}

TEST_CASE("A file that a decorated install section copies is listed with its folder") {
    CHECK(FilesOf(Models +
                  L"[Install.NTamd64]\r\nCopyFiles = DrvCopy\r\n[DrvCopy]\r\nusbser.sys\r\n"
                  L"[DestinationDirs]\r\nDrvCopy=12\r\n") ==
          DriverFileList{{Drivers, L"usbser.sys"}});
}

TEST_CASE("The bare install section is never read, the one with a final dot is") {
    CHECK(
        FilesOf(Models + L"[Install]\r\nCopyFiles=DrvCopy\r\n[DrvCopy]\r\nusbser.sys\r\n").empty());
    CHECK(FilesOf(Models + L"[Install.]\r\nCopyFiles=DrvCopy\r\n[DrvCopy]\r\nusbser.sys\r\n") ==
          DriverFileList{{L"", L"usbser.sys"}});
}

TEST_CASE("On x64 the install sections with a final dot, for NT and for x64 are read") {
    Machine m;
    DriverFileList entries;
    CHECK(GetDriverFileList(AddSections(m, Models), entries));
    CHECK(SectionsSought(m) ==
          Lines{"Manufacturer", "Models", "Install.", "Install.NT", "Install.NTAMD64"});
}

TEST_CASE("On x86 the install section for x86 is read") {
    Machine m;
    m.SetArchitecture(PROCESSOR_ARCHITECTURE_INTEL);
    DriverFileList entries;
    CHECK(GetDriverFileList(AddSections(m, Models), entries));
    CHECK(SectionsSought(m) ==
          Lines{"Manufacturer", "Models", "Install.", "Install.NT", "Install.NTx86"});
}

TEST_CASE("Names of install sections are cut to 259 characters") {
    Machine m;
    const std::wstring install(255, L'i');
    DriverFileList entries;
    CHECK(GetDriverFileList(
        AddSections(m, L"[Manufacturer]\r\nMaker=Models\r\n[Models]\r\nd=" + install + L",ID\r\n"),
        entries));
    const std::string name(255, 'i');
    CHECK(SectionsSought(m) ==
          Lines{"Manufacturer", "Models", name + ".", name + ".NT", name + ".NTA"});
}

TEST_CASE("Two copy sections of one file each both use the first one's folder") {
    CHECK(FilesOf(Models + L"[Install.NT]\r\nCopyFiles=A,B\r\n[A]\r\na.sys\r\n[B]\r\nb.sys\r\n"
                           L"[DestinationDirs]\r\nA=12\r\nB=11\r\n") ==
          DriverFileList{{Drivers, L"a.sys"}, {Drivers, L"b.sys"}});
}

TEST_CASE("A line's position in its section picks the section whose folder counts") {
    CHECK(FilesOf(Models + L"[Install.NT]\r\nCopyFiles=A,B\r\n[A]\r\na1.sys\r\na2.sys\r\n[B]\r\n"
                           L"b.sys\r\n[DestinationDirs]\r\nA=12\r\nB=11\r\n") ==
          DriverFileList{
              {Drivers, L"a1.sys"}, {L"C:\\Windows\\SYSTEM32\\", L"a2.sys"}, {Drivers, L"b.sys"}});
}

TEST_CASE("A copy section with more files than there are copy sections ends the process") {
    Machine m;
    const std::wstring path =
        AddSections(m, Models + L"[Install.NT]\r\nCopyFiles=A\r\n[A]\r\na1.sys\r\na2.sys\r\n");
    DriverFileList entries;
    CHECK(StatusOf(m, [&] { GetDriverFileList(path, entries); }) == 0xC0000417);
}

TEST_CASE("A copy line without a file name ends the process") {
    Machine m;
    const std::wstring path =
        AddSections(m, Models + L"[Install.NT]\r\nCopyFiles=A\r\n[A]\r\na.sys,b\r\n");
    DriverFileList entries;
    REQUIRE(GetDriverFileList(path, entries));
    const int calls = static_cast<int>(m.CallsOf("SetupGetFieldCount").size());
    m.FailCall("SetupGetFieldCount", 2 * calls, ERROR_INVALID_PARAMETER);
    CHECK(StatusOf(m, [&] { GetDriverFileList(path, entries); }) == 0xC0000417);
}

TEST_CASE("A file that is listed twice appears twice") {
    CHECK(FilesOf(Models + L"[Install.NT]\r\nCopyFiles=A,B\r\n[A]\r\nx.sys\r\n[B]\r\nX.SYS\r\n"
                           L"[DestinationDirs]\r\nDefaultDestDir=12\r\n") ==
          DriverFileList{{Drivers, L"x.sys"}, {Drivers, L"X.SYS"}});
}

TEST_CASE("A file whose name equals a folder that is already listed is left out") {
    CHECK(FilesOf(Models + L"[Install.NT]\r\nCopyFiles=A,B\r\n[A]\r\nx.sys\r\n[B]\r\n13\r\n"
                           L"[DestinationDirs]\r\nDefaultDestDir=13\r\n") ==
          DriverFileList{{L"13", L"x.sys"}});
}

TEST_CASE("The case of such a name does not count") {
    CHECK(FilesOf(Models + L"[Install.NT]\r\nCopyFiles=A,B\r\n[A]\r\nx.sys\r\n[B]\r\nfolder\r\n"
                           L"[DestinationDirs]\r\nDefaultDestDir=FOLDER\r\n") ==
          DriverFileList{{L"FOLDER", L"x.sys"}});
}

TEST_CASE("Copy sections are distinct, case ignored, over all install sections") {
    CHECK(FilesOf(L"[Manufacturer]\r\nMaker=Models\r\n[Models]\r\nd=One,ID1\r\ne=Two,ID2\r\n"
                  L"[One.NT]\r\nCopyFiles=A\r\nCopyFiles=B,a\r\n[Two.NTamd64]\r\ncopyfiles=b\r\n"
                  L"[A]\r\na.sys\r\n[B]\r\nb.sys\r\n") ==
          DriverFileList{{L"", L"a.sys"}, {L"", L"b.sys"}});
}

TEST_CASE("A single file behind an at sign is taken for a section, which does not exist") {
    CHECK(FilesOf(Models + L"[Install.NT]\r\nCopyFiles=@usbser.sys\r\n").empty());
}

TEST_CASE("A destination that cannot be read leaves the folder empty") {
    Machine m;
    const std::wstring path =
        AddSections(m, Models + L"[Install.NT]\r\nCopyFiles=A\r\n[A]\r\na.sys\r\n"
                                L"[DestinationDirs]\r\nA=12\r\n");
    // The INF is opened for Manufacturer, Models, three install sections, the copy section.
    m.FailCall("SetupOpenInfFileW", 7, ERROR_ACCESS_DENIED);
    DriverFileList entries;
    CHECK(GetDriverFileList(path, entries));
    CHECK(entries == DriverFileList{{L"", L"a.sys"}});
    CHECK(m.Log() ==
          Lines{"GetInfSectionText: Open inf D:\\Packet\\WIN7\\a.inf fail,error code 0x00000005"});
}

TEST_CASE("When any section cannot be read the file list fails") {
    for (int opening = 1; opening <= 6; ++opening) {
        Machine m;
        const std::wstring path =
            AddSections(m, Models + L"[Install.NT]\r\nCopyFiles=A\r\n[A]\r\na.sys\r\n");
        m.FailCall("SetupOpenInfFileW", opening, ERROR_ACCESS_DENIED);
        DriverFileList entries{{L"old", L"old"}};
        CHECK_FALSE(GetDriverFileList(path, entries));
        CHECK(entries.empty());
        CHECK(m.LeakSummary() == "");
    }
}

TEST_CASE("Without a path there is no file list, and the old one stays") {
    const Machine m;
    DriverFileList entries{{L"old", L"old"}};
    CHECK_FALSE(GetDriverFileList(L"", entries));
    CHECK(entries.size() == 1);
    CHECK(m.Journal() == Lines{});
}
