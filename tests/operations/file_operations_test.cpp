// Scripted file operations on the machine's files.
#include "operations/file_operations.h"

#include "machine/machine.h"
#include "machine/text.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

const std::wstring Driver = L"C:\\Windows\\SYSTEM32\\DRIVERS\\a.sys";

// What one line, run on a fresh machine, leads to: its calls and log lines.
Lines StoryOf(const std::wstring& line, bool expected = true) {
    const Machine m;
    SetLastError(ERROR_GEN_FAILURE);
    CHECK(ExecutSingleFileOper(line) == expected);
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    return m.Story();
}

Lines Failed(const std::string& line, const std::string& code) {
    return {"LOG ExecutSingleFileOper: File oper req " + line + " fail,error code 0x" + code};
}

} // namespace

TEST_CASE("A copy line copies from the program's folder into the driver folder") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\a.sys", "new driver");
    CHECK(ExecutSingleFileOper(L"3,%s,a.sys,%s,a.sys,$CD,$OSDRIVER"));
    CHECK(m.ReadBytes(Driver) == "new driver");
    CHECK(m.Story() ==
          Lines{"CopyFileW(D:\\Packet\\a.sys, C:\\Windows\\SYSTEM32\\DRIVERS\\a.sys, 0)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A copy overwrites an existing file") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\a.sys", "new");
    m.WriteBytes(Driver, "an old and longer driver");
    CHECK(ExecutSingleFileOper(L"3,%s,a.sys,%s,a.sys,$CD,$OSDRIVER"));
    CHECK(m.ReadBytes(Driver) == "new");
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A copy that fails is logged with the filled line, and the section goes on") {
    CHECK(StoryOf(L"3,%s,a.sys,%s,a.sys,$CD,$OSDRIVER") ==
          Lines{"CopyFileW(D:\\Packet\\a.sys, C:\\Windows\\SYSTEM32\\DRIVERS\\a.sys, 0)",
                "LOG ExecutSingleFileOper: File oper req "
                "3,D:\\Packet\\,a.sys,C:\\Windows\\SYSTEM32\\DRIVERS\\,a.sys,$CD,$OSDRIVER "
                "fail,error code 0x00000002"});
}

TEST_CASE("A copy over a file in use is logged") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\a.sys", "new");
    m.WriteBytes(Driver, "old");
    m.LockFile(Driver);
    CHECK(ExecutSingleFileOper(L"3,D:\\Packet\\,a.sys,%s,a.sys,$OSDRIVER"));
    CHECK(m.ReadBytes(Driver) == "old");
    CHECK(m.Log() == Lines{"ExecutSingleFileOper: File oper req "
                           "3,D:\\Packet\\,a.sys,C:\\Windows\\SYSTEM32\\DRIVERS\\,a.sys,$OSDRIVER "
                           "fail,error code 0x00000020"});
}

TEST_CASE("A create line without a file name creates the folder") {
    Machine m;
    CHECK(ExecutSingleFileOper(L"1,%sMaker,,x,x,$WINDOWS"));
    CHECK(m.Exists(L"C:\\Windows\\Maker"));
    CHECK(m.Story() == Lines{"CreateDirectoryW(C:\\Windows\\Maker)"});
}

TEST_CASE("Creating a folder that exists is logged as error 183") {
    CHECK(StoryOf(L"1,%s,,x,x,$WINDOWS") ==
          Lines{"CreateDirectoryW(C:\\Windows\\)",
                "LOG ExecutSingleFileOper: File oper req 1,C:\\Windows\\,,x,x,$WINDOWS "
                "fail,error code 0x000000B7"});
}

TEST_CASE("A create line with a file name creates an empty file") {
    Machine m;
    m.MakeFolder(L"C:\\data");
    CHECK(ExecutSingleFileOper(L"1,%s,new.txt,x,x,C:\\data\\"));
    CHECK(m.Files(L"C:\\data") == WideTexts{L"C:\\data\\new.txt"});
    CHECK(m.Story() == Lines{"CreateFileW(C:\\data\\new.txt, 0x1F01FF, 0x0, 2, 0x80)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("Creating a file that exists empties it") {
    Machine m;
    m.WriteBytes(L"C:\\data\\new.txt", "not empty");
    CHECK(ExecutSingleFileOper(L"1,%s,new.txt,x,x,C:\\data\\"));
    CHECK(m.Exists(L"C:\\data\\new.txt"));
    CHECK(m.ReadBytes(L"C:\\data\\new.txt") == "");
    CHECK(m.Log() == Lines{});
}

TEST_CASE("Creating a file in a missing folder is logged") {
    CHECK(StoryOf(L"1,%s,new.txt,x,x,C:\\data\\") ==
          Lines{"CreateFileW(C:\\data\\new.txt, 0x1F01FF, 0x0, 2, 0x80)",
                "LOG ExecutSingleFileOper: File oper req 1,C:\\data\\,new.txt,x,x,C:\\data\\ "
                "fail,error code 0x00000003"});
}

TEST_CASE("A delete line deletes the file") {
    Machine m;
    m.WriteBytes(L"C:\\tmp\\a.txt", "a");
    m.WriteBytes(L"C:\\tmp\\b.txt", "b");
    CHECK(ExecutSingleFileOper(L"2,%s,a.txt,x,x,C:\\tmp\\"));
    CHECK(m.Files(L"C:\\tmp") == WideTexts{L"C:\\tmp\\b.txt"});
    CHECK(m.Story() == Lines{"DeleteFileW(C:\\tmp\\a.txt)"});
}

TEST_CASE("Deleting a missing file, a folder or a file in use is logged") {
    Machine m;
    m.MakeFolder(L"C:\\tmp\\folder");
    m.WriteBytes(L"C:\\tmp\\used", "u");
    m.LockFile(L"C:\\tmp\\used");
    CHECK(ExecutSingleFileOper(L"2,C:\\tmp\\,none,x,x,p"));
    CHECK(ExecutSingleFileOper(L"2,C:\\tmp\\,folder,x,x,p"));
    CHECK(ExecutSingleFileOper(L"2,C:\\tmp\\,used,x,x,p"));
    CHECK(m.Exists(L"C:\\tmp\\used"));
    CHECK(m.Log() ==
          Lines{"ExecutSingleFileOper: File oper req 2,C:\\tmp\\,none,x,x,p fail,error code "
                "0x00000002",
                "ExecutSingleFileOper: File oper req 2,C:\\tmp\\,folder,x,x,p fail,error code "
                "0x00000005",
                "ExecutSingleFileOper: File oper req 2,C:\\tmp\\,used,x,x,p fail,error code "
                "0x00000020"});
}

TEST_CASE("No separator is put between folder and file name") {
    CHECK(StoryOf(L"2,C:\\tmp,a.txt,x,x,p").front() == "DeleteFileW(C:\\tmpa.txt)");
    CHECK(StoryOf(L"2,%s,\\a.sys,x,x,$SYSTEM").front() ==
          "DeleteFileW(C:\\Windows\\SYSTEM32\\a.sys)");
    CHECK(StoryOf(L"2,%s,\\a.sys,x,x,$OSPARTION").front() == "DeleteFileW(C:\\a.sys)");
}

TEST_CASE("Every dollar variable names its folder in a file operation") {
    Machine m;
    m.WriteIni(L"[USER_ENV_PARA]\r\nDATA=E:\\data\\\r\n");
    for (const wchar_t* name :
         {L"$WINDOWS", L"$SYSTEM", L"$CD", L"$OSPARTION", L"$OSDRIVER", L"$DATA", L"$NONE"}) {
        CHECK(ExecutSingleFileOper(std::wstring(L"2,%s,a,x,x,") + name));
    }
    CHECK(m.CallsOf("DeleteFileW") == Lines{"DeleteFileW(C:\\Windows\\a)",
                                            "DeleteFileW(C:\\Windows\\SYSTEM32a)",
                                            "DeleteFileW(D:\\Packet\\a)", "DeleteFileW(C:a)",
                                            "DeleteFileW(C:\\Windows\\SYSTEM32\\DRIVERS\\a)",
                                            "DeleteFileW(E:\\data\\a)", "DeleteFileW(a)"});
}

TEST_CASE("A line without parameters is logged as failed and stops its section") {
    CHECK(StoryOf(L"2,C:\\tmp\\,a.txt,x,x", false) == Failed("", "00000057"));
    Machine m;
    m.WriteBytes(L"C:\\tmp\\a.txt", "a");
    m.WriteBytes(L"C:\\tmp\\b.txt", "b");
    m.WriteIni(L"[PRE_FILE_OPER]\r\nOPERNUM=2\r\nOPER00=2,C:\\tmp\\,a.txt,x,x\r\n"
               L"OPER01=2,C:\\tmp\\,b.txt,x,x,p\r\n");
    CHECK(RunFileOperSection(L"PRE_FILE_OPER"));
    CHECK(m.Files(L"C:\\tmp").size() == 2);
    CHECK(m.Story() == Failed("", "00000057"));
}

TEST_CASE("An opcode that is none does nothing, without a word") {
    for (const wchar_t* opcode : {L"0", L"4", L"-1", L"x", L"", L"99999999999999"}) {
        CHECK(StoryOf(opcode + std::wstring(L",C:\\tmp\\,a.txt,x,x,p")) == Lines{});
    }
}

TEST_CASE("The digits at the start of the opcode count") {
    CHECK(StoryOf(L" 2x,C:\\tmp\\,a.txt,x,x,p").front() == "DeleteFileW(C:\\tmp\\a.txt)");
    CHECK(StoryOf(L"%s,C:\\tmp\\,a.txt,x,x,2").front() == "DeleteFileW(C:\\tmp\\a.txt)");
}

TEST_CASE("An empty line is nothing to do") {
    CHECK(StoryOf(L"") == Lines{});
}

TEST_CASE("A line with too few fields is logged with its own text and not carried out") {
    CHECK(StoryOf(L"3,%s,a.sys,$CD") == Failed("3,%s,a.sys,$CD", "00000057"));
    CHECK(StoryOf(L"2") == Failed("2", "00000057"));
    CHECK(StoryOf(L",") == Failed(",", "00000057"));
}

TEST_CASE("A line is logged and not carried out when the system does not tell a folder") {
    Machine m;
    m.FailCall("GetWindowsDirectoryW", 1, ERROR_ACCESS_DENIED);
    CHECK(ExecutSingleFileOper(L"2,%s,a.sys,x,x,$OSDRIVER"));
    CHECK(m.Story() == Failed("2,%s,a.sys,x,x,$OSDRIVER", "00000005"));
}

TEST_CASE("A delete line whose path was cut deletes nothing") {
    Machine m;
    const std::wstring folder = L"C:\\" + std::wstring(120, L'f') + L"\\" + std::wstring(120, L'g');
    m.WriteBytes(folder + L"\\abcdefghij", "a");
    const std::wstring name = L"abcdefghijklmnop";
    const std::wstring line = L"2,%s," + name + L",x,x," + folder + L"\\";
    CHECK(ExecutSingleFileOper(line));
    CHECK(m.Story().size() == 1);
    REQUIRE(m.Log().size() == 1);
    CHECK(m.Log()[0].starts_with("ExecutSingleFileOper: File oper req 2,C:\\ffff"));
    CHECK(m.Log()[0].ends_with(" fail,error code 0x000000CE"));
    CHECK(m.Files(folder).size() == 1);
}

TEST_CASE("A filled line is logged at 259 characters") {
    const Lines story = StoryOf(L"2,%s,a,x,x," + std::wstring(300, L'p'));
    CHECK(story == Failed("2," + std::string(257, 'p'), "000000CE"));
}

TEST_CASE("A copy line whose destination was cut copies nothing") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\a.sys", "new");
    CHECK(ExecutSingleFileOper(L"3,%s,a.sys,%s,a.sys,$CD," + std::wstring(400, L'd')));
    CHECK(m.CallsOf("CopyFileW") == Lines{});
    REQUIRE(m.Log().size() == 1);
    CHECK(m.Log()[0].ends_with(" fail,error code 0x000000CE"));
}

TEST_CASE("A path that ends where its line is cut is used when it is whole") {
    const std::wstring folder = L"C:\\" + std::wstring(200, L'f') + L"\\";
    for (const std::size_t length : {258U, 259U, 260U}) {
        CAPTURE(length);
        // "2,<folder>,<name>" takes so many characters; what follows, its comma included, is cut.
        const std::wstring name(length - 3 - folder.size(), L'n');
        const Lines story = StoryOf(L"2,%s," + name + L",x,x," + folder);
        if (length <= 259) {
            CHECK(story.front() == "DeleteFileW(" + Utf8(folder + name) + ")");
        } else {
            CHECK(story.size() == 1);
            CHECK(story.back().ends_with(" fail,error code 0x000000CE"));
        }
    }
}

TEST_CASE("A line that is cut behind the fields it uses is carried out") {
    Machine m;
    m.WriteBytes(L"C:\\tmp\\a.txt", "a");
    CHECK(ExecutSingleFileOper(L"2,C:\\tmp\\,a.txt,x,x," + std::wstring(400, L'p')));
    CHECK(m.Story() == Lines{"DeleteFileW(C:\\tmp\\a.txt)"});
    CHECK_FALSE(m.Exists(L"C:\\tmp\\a.txt"));
}

TEST_CASE("A line as long as its buffer is logged and not carried out") {
    const std::wstring start = L"2,C:\\tmp\\,a.txt,x,x,";
    CHECK(StoryOf(start + std::wstring(1022 - start.size(), L'p')).front() ==
          "DeleteFileW(C:\\tmp\\a.txt)");
    const std::wstring line = start + std::wstring(1023 - start.size(), L'p');
    CHECK(StoryOf(line) == Failed(std::string(line.begin(), line.end()), "000000CE"));
}

TEST_CASE("A section runs its lines and leaves out the missing one") {
    Machine m;
    m.WriteIni(L"[PRE_FILE_OPER]\r\nOPERNUM=3\r\nOPER00=1,%s,one,x,x,$WINDOWS\r\n"
               L"OPER02=1,%s,two,x,x,$WINDOWS\r\nOPER03=1,%s,three,x,x,$WINDOWS\r\n");
    CHECK(RunFileOperSection(L"PRE_FILE_OPER"));
    CHECK(m.Story() == Lines{"CreateFileW(C:\\Windows\\one, 0x1F01FF, 0x0, 2, 0x80)",
                             "CreateFileW(C:\\Windows\\two, 0x1F01FF, 0x0, 2, 0x80)"});
}

TEST_CASE("A failing operation does not stop its section") {
    Machine m;
    m.WriteIni(L"[POST_FILE_OPER]\r\nOPERNUM=2\r\nOPER00=2,%s,none,x,x,$WINDOWS\r\n"
               L"OPER01=1,%s,one,x,x,$WINDOWS\r\n");
    CHECK(RunFileOperSection(L"POST_FILE_OPER"));
    CHECK(m.Exists(L"C:\\Windows\\one"));
    CHECK(m.Log().size() == 1);
}

TEST_CASE("A file section without lines succeeds, one without a name does not") {
    const Machine m;
    CHECK(RunFileOperSection(L"PRE_FILE_OPER"));
    CHECK(m.Story() == Lines{});
    CHECK_FALSE(RunFileOperSection(L""));
}
