// Deleting files, and the driver files of a packet INF.
#include "cleanup/remove_file.h"
#include "machine/machine.h"
#include "machine/text.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

const std::wstring Drivers = L"C:\\Windows\\SYSTEM32\\DRIVERS\\";

std::string Line(const std::string& name, const std::string& end) {
    return "RemoveFile: File C:\\Windows\\SYSTEM32\\DRIVERS\\" + name + end;
}

// One file per copy section: the second one's line stands at position 0 again.
const std::wstring TwoSections =
    L"[Version]\r\nSignature=\"$Windows NT$\"\r\nClass=Ports\r\n[Manufacturer]\r\nm=Models,"
    L"NTamd64\r\n[Models.NTamd64]\r\nd=Install,USB\\ID\r\n[Install.NTamd64]\r\nCopyFiles=A,B\r\n"
    L"[A]\r\na.sys\r\n[B]\r\nb.dll\r\n[DestinationDirs]\r\nA=12\r\nB=11\r\n";

} // namespace

TEST_CASE("A driver file of the packet is made writable and deleted") {
    Machine m;
    m.WriteBytes(Drivers + L"modem.sys", "x");
    CHECK(RemoveFile(
        m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\ID"}, .CopyFiles = {L"modem.sys"}})));
    CHECK(m.Story() == Lines{"GetFileAttributesW(C:\\Windows\\SYSTEM32\\DRIVERS\\modem.sys)",
                             "SetFileAttributesW(C:\\Windows\\SYSTEM32\\DRIVERS\\modem.sys, 0x80)",
                             "DeleteFileW(C:\\Windows\\SYSTEM32\\DRIVERS\\modem.sys)",
                             "LOG " + Line("modem.sys", " was deleted successfully")});
    CHECK_FALSE(m.Exists(Drivers + L"modem.sys"));
}

TEST_CASE("A file that is missing is logged, and the result stays true") {
    Machine m;
    CHECK(RemoveFile(
        m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\ID"}, .CopyFiles = {L"modem.sys"}})));
    CHECK(m.Log() == Lines{Line("modem.sys", " not exist")});
    CHECK(m.CallsOf("DeleteFileW") == Lines{});
}

TEST_CASE("A read-only file is deleted") {
    Machine m;
    m.WriteBytes(Drivers + L"modem.sys", "x");
    m.SetAttributes(Drivers + L"modem.sys", FILE_ATTRIBUTE_READONLY);
    DeleteFileWithLog(Drivers + L"modem.sys");
    CHECK(m.Log() == Lines{Line("modem.sys", " was deleted successfully")});
    CHECK_FALSE(m.Exists(Drivers + L"modem.sys"));
}

TEST_CASE("A locked file is reported with the system's reason") {
    Machine m;
    m.WriteBytes(Drivers + L"modem.sys", "x");
    m.LockFile(Drivers + L"modem.sys");
    DeleteFileWithLog(Drivers + L"modem.sys");
    CHECK(m.Log() == Lines{"RemoveFile: Error in deleting file : "
                           "C:\\Windows\\SYSTEM32\\DRIVERS\\modem.sys, error code 0x00000020"});
}

TEST_CASE("A folder of that name stays and is reported") {
    Machine m;
    m.MakeFolder(Drivers + L"modem.sys");
    DeleteFileWithLog(Drivers + L"modem.sys");
    CHECK(m.Log() == Lines{"RemoveFile: Error in deleting file : "
                           "C:\\Windows\\SYSTEM32\\DRIVERS\\modem.sys, error code 0x00000005"});
    CHECK(m.Exists(Drivers + L"modem.sys"));
}

TEST_CASE("Attributes that cannot be set do not keep a file from being deleted") {
    Machine m;
    m.WriteBytes(Drivers + L"modem.sys", "x");
    m.FailCall("SetFileAttributesW", 1, ERROR_ACCESS_DENIED);
    DeleteFileWithLog(Drivers + L"modem.sys");
    CHECK(m.Log() == Lines{Line("modem.sys", " was deleted successfully")});
}

TEST_CASE("A missing file whose path fits is missing, however long the path") {
    for (const std::size_t length : {199U, 200U, 230U, 259U}) {
        Machine m;
        const std::wstring path = Drivers + std::wstring(length - Drivers.size(), L'x');
        DeleteFileWithLog(path);
        CHECK(m.Log() == Lines{"RemoveFile: File " + machine::Utf8(path) + " not exist"});
    }
}

TEST_CASE("Of a path of 260 characters nothing is known, not even that the file is missing") {
    Machine m;
    const std::wstring path = Drivers + std::wstring(260 - Drivers.size(), L'x');
    DeleteFileWithLog(path);
    CHECK(m.Calls() == Lines{});
    CHECK(m.Log() == Lines{"RemoveFile: Error in deleting file : " + machine::Utf8(path) +
                           ", error code 0x000000CE"});
}

TEST_CASE("A path that does not fit is reported, never cut to another file's") {
    Machine m;
    const std::wstring folder = L"C:\\" + std::wstring(200, L'f') + L"\\";
    const std::wstring path = folder + std::wstring(100, L'n');
    DeleteFileWithLog(path);
    CHECK(m.Calls() == Lines{});
    REQUIRE(m.Log().size() == 1);
    CHECK(m.Log().front().rfind("RemoveFile: Error in deleting file : C:\\ff", 0) == 0);
    CHECK(m.Log().front().find(", error code 0x000000CE") != std::string::npos);
}

TEST_CASE(
    "The position of a line in its section picks the folder: both files go to the first one's") {
    Machine m;
    m.WriteBytes(Drivers + L"a.sys", "x");
    m.WriteBytes(L"C:\\Windows\\SYSTEM32\\b.dll", "where the INF put it");
    m.WriteBytes(Drivers + L"b.dll", "x");
    CHECK(RemoveFile(m.AddInf(L"WIN7\\a.inf", TwoSections)));
    CHECK(m.Log() == Lines{Line("a.sys", " was deleted successfully"),
                           Line("b.dll", " was deleted successfully")});
    CHECK(m.Exists(L"C:\\Windows\\SYSTEM32\\b.dll"));
}

TEST_CASE(
    "A copy section with more files than there are sections ends the process, nothing deleted") {
    Machine m;
    m.WriteBytes(Drivers + L"a.sys", "x");
    const std::wstring inf =
        m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\ID"}, .CopyFiles = {L"a.sys", L"b.sys"}});
    CHECK_THROWS_AS(RemoveFile(inf), ProcessEnded);
    CHECK(m.Exists(Drivers + L"a.sys"));
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A folder number that is not known is a text before the file's name") {
    Machine m;
    CHECK(RemoveFile(
        m.AddInf(L"WIN7\\a.inf",
                 Inf{.Ids = {L"USB\\ID"}, .CopyFiles = {L"a.sys"}, .DestinationDir = L"13"})));
    CHECK(m.Log() == Lines{"RemoveFile: File 13a.sys not exist"});
}

TEST_CASE("One file that cannot be deleted leaves the others and the result as they are") {
    Machine m;
    m.WriteBytes(Drivers + L"a.sys", "x");
    m.WriteBytes(Drivers + L"b.dll", "x");
    m.LockFile(Drivers + L"a.sys");
    CHECK(RemoveFile(m.AddInf(L"WIN7\\a.inf", TwoSections)));
    CHECK_FALSE(m.Exists(Drivers + L"b.dll"));
}

TEST_CASE("An INF that cannot be read gives false, an INF that copies nothing true") {
    Machine m;
    CHECK_FALSE(RemoveFile(L""));
    CHECK_FALSE(RemoveFile(L"D:\\Packet\\WIN7\\missing.inf"));
    m.ForgetJournal();
    CHECK(RemoveFile(m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\ID"}})));
    CHECK(m.Log() == Lines{});
}

TEST_CASE("The twin of an INF has the extension PNF behind its last dot") {
    CHECK(PrecompiledTwin(L"C:\\Windows\\INF\\oem1.inf") == L"C:\\Windows\\INF\\oem1.PNF");
    CHECK(PrecompiledTwin(L"C:\\a.b\\x.y.inf") == L"C:\\a.b\\x.y.PNF");
    CHECK(PrecompiledTwin(std::wstring(300, L'a') + L".inf") == std::wstring(300, L'a') + L".PNF");
}

TEST_CASE("The twin of an INF without an extension lies beside it, whatever its folder is called") {
    CHECK(PrecompiledTwin(L"C:\\Windows\\INF\\oem1") == L"C:\\Windows\\INF\\oem1.PNF");
    CHECK(PrecompiledTwin(L"C:\\a.b\\oem1") == L"C:\\a.b\\oem1.PNF");
    CHECK(PrecompiledTwin(L"oem1") == L"oem1.PNF");
}

TEST_CASE(
    "A file without a drive or a server in its path does not exist, wherever the program is") {
    for (const wchar_t* path : {L"driver.sys", L"", L"D", L"D:driver.sys", L"13driver.sys",
                                L"\\SYSTEM32\\DRIVERS\\driver.sys", L".\\driver.sys"}) {
        const Machine m;
        DeleteFileWithLog(path);
        CHECK(m.Story() == Lines{"LOG RemoveFile: File " + Utf8(path) + " not exist"});
        CHECK(m.Calls() == Lines{});
    }
}
