// The "$" variables of operation lines.
#include "config/operation_variables.h"

#include "common/run_state.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

// The expanded parameters of a file operation line with these parameters.
TextList FileParameters(const std::wstring& parameters) {
    TextList result;
    CHECK(ExpandFileOperVariables(L"3,%s,x.sys,%s,x.sys," + parameters, result));
    return result;
}

TextList RegeditParameters(const std::wstring& parameters) {
    TextList result;
    CHECK(ExpandRegeditVariables(L"1,%s,SOFTWARE\\%sX,N,D,1," + parameters, result));
    return result;
}

} // namespace

TEST_CASE("A copy line's parameters are the program's folder and the driver folder") {
    const Machine m;
    TextList parameters{L"old"};
    CHECK(ExpandFileOperVariables(L"3,%s,x.sys,%s,x.sys,$CD,$OSDRIVER", parameters));
    CHECK(parameters == TextList{L"D:\\Packet\\", L"C:\\Windows\\SYSTEM32\\DRIVERS\\"});
    CHECK(m.Journal() == Lines{"GetModuleFileNameW(null, 1024)", "GetWindowsDirectoryW(1024)"});
}

TEST_CASE("Some folder variables end in a backslash, some do not") {
    Machine m;
    CHECK(FileParameters(L"$WINDOWS,$SYSTEM,$CD,$OSPARTION,$OSDRIVER") ==
          TextList{L"C:\\Windows\\", L"C:\\Windows\\SYSTEM32", L"D:\\Packet\\", L"C:",
                   L"C:\\Windows\\SYSTEM32\\DRIVERS\\"});
    m.SetWindowsFolder(L"E:\\OS\\WINNT");
    m.SetExecutable(L"F:\\Setup.exe");
    CHECK(FileParameters(L"$WINDOWS,$SYSTEM,$CD,$OSPARTION,$OSDRIVER") ==
          TextList{L"E:\\OS\\WINNT\\", L"E:\\OS\\WINNT\\SYSTEM32", L"F:\\", L"E:",
                   L"E:\\OS\\WINNT\\SYSTEM32\\DRIVERS\\"});
}

TEST_CASE("The names of variables are read in any case") {
    const Machine m;
    CHECK(FileParameters(L"$windows,$system,$cd,$ospartion,$osdriver") ==
          FileParameters(L"$WINDOWS,$SYSTEM,$CD,$OSPARTION,$OSDRIVER"));
    MatchedDeviceBaseId = L"USB\\X";
    CHECK(RegeditParameters(L"$WOW6432NODE,$devid") == TextList{L"Wow6432Node\\", L"USB\\X"});
}

TEST_CASE("A name that is no variable is looked up in USER_ENV_PARA") {
    Machine m;
    CHECK(FileParameters(L"$SYSTEM32") == TextList{L""});
    CHECK(m.CallsOf("GetPrivateProfileStringW").back() ==
          "GetPrivateProfileStringW(USER_ENV_PARA, SYSTEM32, 1024, D:\\Packet\\Setup.ini)");
    m.WriteIni(L"[USER_ENV_PARA]\r\nSYSTEM32=here\r\nDATA=C:\\data\\\r\nOSPARTITION=there\r\n");
    CHECK(FileParameters(L"$SYSTEM32,$data,$OSPARTITION,$none") ==
          TextList{L"here", L"C:\\data\\", L"there", L""});
    CHECK(RegeditParameters(L"$SYSTEM32,$data,$none") == TextList{L"here", L"C:\\data\\", L""});
}

TEST_CASE("The variables of one kind of lines are none in the other kind") {
    Machine m;
    CHECK(FileParameters(L"$DEVID,$USERKEY,$Wow6432Node") == TextList{L"", L"", L""});
    CHECK(RegeditParameters(L"$WINDOWS,$SYSTEM,$CD,$OSPARTION,$OSDRIVER") ==
          TextList{L"", L"", L"", L"", L""});
    m.WriteIni(L"[USER_ENV_PARA]\r\nCD=from the file\r\nWINDOWS=not used\r\n");
    CHECK(RegeditParameters(L"$CD") == TextList{L"from the file"});
    CHECK(FileParameters(L"$WINDOWS") == TextList{L"C:\\Windows\\"});
}

TEST_CASE("A parameter without a dollar sign stays, even when it is a variable's name") {
    const Machine m;
    CHECK(FileParameters(L"WINDOWS,cd, $CD,x$CD,%s") ==
          TextList{L"WINDOWS", L"cd", L" $CD", L"x$CD", L"%s"});
    CHECK(RegeditParameters(L"HKEY_LOCAL_MACHINE,DEVID") ==
          TextList{L"HKEY_LOCAL_MACHINE", L"DEVID"});
}

TEST_CASE("An empty parameter stays empty, and a lone dollar sign becomes empty") {
    const Machine m;
    CHECK(FileParameters(L"a,,b") == TextList{L"a", L"", L"b"});
    CHECK(FileParameters(L"$") == TextList{L""});
    CHECK(RegeditParameters(L"$,a") == TextList{L"", L"a"});
}

TEST_CASE("The value of a variable is not expanded again") {
    Machine m;
    m.WriteIni(L"[USER_ENV_PARA]\r\nA=$CD\r\n");
    CHECK(FileParameters(L"$A,$$CD") == TextList{L"$CD", L""});
}

TEST_CASE("The variable USERKEY is the configured key") {
    Machine m;
    CHECK(RegeditParameters(L"$USERKEY") == TextList{L""});
    m.WriteIni(L"[USERSETTING]\r\nUSERKEY=SOFTWARE\\Maker\r\n[USER_ENV_PARA]\r\nUSERKEY=no\r\n");
    CHECK(RegeditParameters(L"$USERKEY,$userkey") ==
          TextList{L"SOFTWARE\\Maker", L"SOFTWARE\\Maker"});
}

TEST_CASE("The variable Wow6432Node is its own name with a backslash, on every system") {
    Machine m;
    m.SetArchitecture(PROCESSOR_ARCHITECTURE_INTEL);
    CHECK(RegeditParameters(L"$Wow6432Node") == TextList{L"Wow6432Node\\"});
}

TEST_CASE("The variable DEVID is empty until a device has been matched") {
    const Machine m;
    CHECK(RegeditParameters(L"$DEVID") == TextList{L""});
    MatchedDeviceBaseId = L"USB\\VID_3A9D&PID_9001";
    CHECK(RegeditParameters(L"$DEVID") == TextList{L"USB\\VID_3A9D&PID_9001"});
}

TEST_CASE("Variables from Setup.ini follow the run mode") {
    Machine m;
    m.WriteIni(L"[USER_ENV_PARA.UNINSTALL]\r\nA=u\r\n[USER_ENV_PARA.INSTALL]\r\nA=i\r\n");
    CHECK(FileParameters(L"$A") == TextList{L"i"});
    SetupMode = 0;
    CHECK(RegeditParameters(L"$A") == TextList{L"u"});
}

TEST_CASE("A variable's value is cut to 1,023 characters") {
    Machine m;
    for (const std::size_t length : {1023U, 1024U, 5000U}) {
        m.WriteIni(L"[USER_ENV_PARA]\r\nA=" + std::wstring(length, L'v') + L"\r\n");
        CHECK(FileParameters(L"$A") == TextList{std::wstring(1023, L'v')});
    }
}

TEST_CASE("A line that has its fixed fields only has no parameters") {
    const Machine m;
    TextList parameters{L"old"};
    CHECK(ExpandFileOperVariables(L"2,C:\\tmp\\,a.txt,x,x", parameters));
    CHECK(parameters == TextList{});
    parameters = {L"old"};
    CHECK(ExpandFileOperVariables(L"2,C:\\tmp\\,a.txt,x,x,", parameters));
    CHECK(parameters == TextList{});
    parameters = {L"old"};
    CHECK(ExpandRegeditVariables(L"2,HKEY_LOCAL_MACHINE,K,V,x,1", parameters));
    CHECK(parameters == TextList{});
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("A file operation with fewer than its fixed fields is refused") {
    const Machine m;
    TextList parameters;
    CHECK_FALSE(ExpandFileOperVariables(L"2,C:\\tmp\\,a.txt,x", parameters));
    CHECK_FALSE(ExpandFileOperVariables(L"2", parameters));
}

TEST_CASE("A registry request with fewer than its fixed fields has no parameters") {
    const Machine m;
    for (const wchar_t* line : {L"2,HKEY_LOCAL_MACHINE,K,V,x", L"$CD", L","}) {
        TextList parameters{L"old"};
        CHECK(ExpandRegeditVariables(line, parameters));
        CHECK(parameters == TextList{});
    }
}

TEST_CASE("An empty line is refused") {
    const Machine m;
    TextList parameters;
    CHECK_FALSE(ExpandFileOperVariables(L"", parameters));
    CHECK_FALSE(ExpandRegeditVariables(L"", parameters));
}

TEST_CASE("A line is refused when the system does not tell a folder that it names") {
    Machine m;
    TextList parameters;
    m.FailCallsFrom("GetWindowsDirectoryW", 1, ERROR_ACCESS_DENIED);
    for (const wchar_t* name : {L"$WINDOWS", L"$SYSTEM", L"$OSPARTION", L"$OSDRIVER"}) {
        CHECK_FALSE(ExpandFileOperVariables(std::wstring(L"2,%s,a,x,x,") + name, parameters));
    }
    CHECK(ExpandFileOperVariables(L"2,%s,a,x,x,$CD", parameters));
    m.FailCallsFrom("GetModuleFileNameW", 1, ERROR_ACCESS_DENIED);
    CHECK_FALSE(ExpandFileOperVariables(L"2,%s,a,x,x,$CD", parameters));
}
