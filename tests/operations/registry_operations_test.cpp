// Scripted registry operations on the machine's registry.
#include "operations/registry_operations.h"

#include "common/run_state.h"
#include "machine/machine.h"
#include "machine/text.h"
#include "support/doctest_support.h"

#include <algorithm>

using namespace machine;

namespace {

const std::wstring Key = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\VendorX";
// The code that a failing registry call leaves in the log: whatever the thread's last error was.
constexpr DWORD LeftOver = 0x4D2;

// Runs one request on the machine; its result is always true.
void Run(const std::wstring& line, RegistryData* data = nullptr) {
    SetLastError(LeftOver);
    CHECK(ExecuteSingleRegeditReq(line, data));
}

// What one request, run on a fresh machine, leads to.
Lines StoryOf(const std::wstring& line) {
    const Machine m;
    Run(line);
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    return m.Story();
}

std::string Failed(const std::string& line, const std::string& code = "000004D2") {
    return "LOG ExecuteSingleRegeditReq: Register operation fail, req " + line + " error code 0x" +
           code;
}

RegistryData DataOf(const std::wstring& text) {
    RegistryData data{};
    std::copy_n(text.begin(), std::min(text.size(), data.size()), data.begin());
    return data;
}

std::string BytesOf(const std::wstring& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

} // namespace

TEST_CASE("A set request creates the key in the 32-bit part and sets the value") {
    Machine m;
    Run(L"1,%s,SOFTWARE\\%sVendorX,Port,COM3,1,HKEY_LOCAL_MACHINE,$Wow6432Node");
    CHECK(m.RegistryText(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\VendorX", L"Port") ==
          L"COM3");
    CHECK(m.Story() == Lines{"RegCreateKeyExW(HKLM, SOFTWARE\\Wow6432Node\\VendorX, 0, 0x2)",
                             "RegSetValueExW(key1, Port, 1, 10)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("Both roots are known") {
    Machine m;
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,machine,1,p");
    Run(L"1,%s,SOFTWARE\\VendorX,A,user,1,HKEY_CURRENT_USER");
    CHECK(m.RegistryText(Key, L"A") == L"machine");
    CHECK(m.RegistryText(L"HKEY_CURRENT_USER\\SOFTWARE\\VendorX", L"A") == L"user");
    CHECK(m.CallsOf("RegCreateKeyExW") ==
          Lines{"RegCreateKeyExW(HKLM, SOFTWARE\\VendorX, 0, 0x2)",
                "RegCreateKeyExW(HKCU, SOFTWARE\\VendorX, 0, 0x2)"});
}

TEST_CASE("A root in another spelling is no key, and the request is logged as failed") {
    for (const wchar_t* root :
         {L"hkey_local_machine", L"HKLM", L" HKEY_LOCAL_MACHINE", L"", L"HKEY_CLASSES_ROOT"}) {
        const std::wstring line = std::wstring(L"1,") + root + L",SOFTWARE\\VendorX,A,a,1,p";
        CHECK(StoryOf(line) == Lines{"RegCreateKeyExW(null, SOFTWARE\\VendorX, 0, 0x2)",
                                     Failed(std::string(line.begin(), line.end()))});
    }
    CHECK(StoryOf(L"2,HKLM,K,V,x,1,p") ==
          Lines{"RegOpenKeyExW(null, K, 0x2)", Failed("2,HKLM,K,V,x,1,p")});
    CHECK(StoryOf(L"3,HKLM,K,V,x,1,p") ==
          Lines{"RegOpenKeyExW(null, K, 0x1)", Failed("3,HKLM,K,V,x,1,p")});
}

TEST_CASE("A value is set in a key that exists, beside its other values") {
    Machine m;
    m.SetRegistryText(Key, L"Other", L"stays");
    m.SetRegistryText(Key, L"Port", L"COM1");
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,COM3,1,p");
    CHECK(m.RegistryText(Key, L"Port") == L"COM3");
    CHECK(m.RegistryText(Key, L"Other") == L"stays");
}

TEST_CASE("A value is written as wide text, whatever its type says") {
    Machine m;
    for (const wchar_t* type : {L"1", L"2", L"4", L"7", L"0", L"x"}) {
        Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,T%s,1,%s," + std::wstring(type) + L"," + type);
    }
    CHECK(m.RegistryType(Key, L"T1") == REG_SZ);
    CHECK(m.RegistryType(Key, L"T2") == REG_EXPAND_SZ);
    CHECK(m.RegistryType(Key, L"T4") == REG_DWORD);
    CHECK(m.RegistryType(Key, L"T7") == REG_MULTI_SZ);
    CHECK(m.RegistryType(Key, L"T0") == REG_NONE);
    CHECK(m.RegistryType(Key, L"Tx") == REG_NONE);
    CHECK(m.RegistryBytes(Key, L"T1") == BytesOf(std::wstring(L"1\0", 2)));
    CHECK(m.RegistryBytes(Key, L"T4") == std::string("\x31\0\0\0", 4));
    CHECK(m.Log() == Lines{});
}

TEST_CASE("Empty data is one terminating zero, an empty value name the key's own value") {
    Machine m;
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,,,1,p");
    CHECK(m.RegistryValueExists(Key, L""));
    CHECK(m.RegistryBytes(Key, L"") == std::string(2, '\0'));
    CHECK(m.CallsOf("RegSetValueExW") == Lines{"RegSetValueExW(key1, , 1, 2)"});
}

TEST_CASE("Letters beyond ASCII arrive in the registry") {
    Machine m;
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,N\x00E4me,\x4E2D\x6587,1,p");
    CHECK(m.RegistryText(Key, L"N\x00E4me") == L"\x4E2D\x6587");
}

TEST_CASE("Data that the caller gives is written whole in place of the line's own") {
    Machine m;
    RegistryData data = DataOf(L"given");
    data.back() = L'!';
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,own,3,p", &data);
    CHECK(m.CallsOf("RegSetValueExW") == Lines{"RegSetValueExW(key1, A, 3, 2048)"});
    CHECK(m.RegistryBytes(Key, L"A") == BytesOf({data.begin(), data.end()}));
    CHECK(data.back() == L'!');
}

TEST_CASE("Data that the caller gives is passed over when it is empty") {
    Machine m;
    RegistryData data{};
    data[1] = L'x';
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,own,1,p", &data);
    CHECK(m.RegistryText(Key, L"A") == L"own");
    CHECK(m.CallsOf("RegSetValueExW") == Lines{"RegSetValueExW(key1, A, 1, 8)"});
}

TEST_CASE("A delete request deletes the value") {
    Machine m;
    m.SetRegistryText(Key, L"Sub", L"value");
    m.MakeRegistryKey(Key + L"\\Sub");
    Run(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Sub,x,1,p");
    CHECK_FALSE(m.RegistryValueExists(Key, L"Sub"));
    CHECK(m.RegistryKeyExists(Key + L"\\Sub"));
    CHECK(m.Story() ==
          Lines{"RegOpenKeyExW(HKLM, SOFTWARE\\VendorX, 0x2)", "RegDeleteValueW(key1, Sub)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A delete request whose key path ends in a backslash deletes the subkey") {
    Machine m;
    m.SetRegistryText(Key, L"Sub", L"value");
    m.MakeRegistryKey(Key + L"\\Sub");
    Run(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX\\,Sub,x,1,p");
    CHECK(m.RegistryValueExists(Key, L"Sub"));
    CHECK_FALSE(m.RegistryKeyExists(Key + L"\\Sub"));
    CHECK(m.Story() ==
          Lines{"RegOpenKeyExW(HKLM, SOFTWARE\\VendorX\\, 0x2)", "RegDeleteKeyW(key1, Sub)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A subkey that has subkeys itself is not deleted") {
    Machine m;
    m.MakeRegistryKey(Key + L"\\Sub\\Deeper");
    Run(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX\\,Sub,x,1,p");
    CHECK(m.RegistryKeyExists(Key + L"\\Sub\\Deeper"));
    CHECK(m.Story().back() == Failed("2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX\\,Sub,x,1,p"));
}

TEST_CASE("Deleting what is not there is logged") {
    CHECK(StoryOf(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Sub,x,1,p") ==
          Lines{"RegOpenKeyExW(HKLM, SOFTWARE\\VendorX, 0x2)",
                Failed("2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Sub,x,1,p")});
    Machine m;
    m.MakeRegistryKey(Key);
    Run(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Sub,x,1,p");
    CHECK(m.Story().back() == Failed("2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Sub,x,1,p"));
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A delete request without a key path is logged and never reaches the root") {
    CHECK(StoryOf(L"2,HKEY_LOCAL_MACHINE,,SOFTWARE,x,1,p") ==
          Lines{Failed("2,HKEY_LOCAL_MACHINE,,SOFTWARE,x,1,p", "00000057")});
}

TEST_CASE("A query brings the value") {
    Machine m;
    m.SetRegistryText(Key, L"Port", L"COM3");
    RegistryData data = DataOf(L"before");
    Run(L"3,%s,SOFTWARE\\VendorX,Port,x,1,HKEY_LOCAL_MACHINE", &data);
    CHECK(TextOfRegistryData(data) == L"COM3");
    CHECK(m.Story() ==
          Lines{"RegOpenKeyExW(HKLM, SOFTWARE\\VendorX, 0x1)", "RegQueryValueExW(key1, Port)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A query brings a value of any type, whatever type the line names") {
    Machine m;
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,D,1,4,p");
    RegistryData data{};
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,D,x,1,p", &data);
    CHECK(data[0] == 0x31);
    CHECK(data[1] == 0);
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A query of a missing value or key is logged and leaves the caller's data") {
    Machine m;
    RegistryData data = DataOf(L"before");
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,x,1,p", &data);
    m.MakeRegistryKey(Key);
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,x,1,p", &data);
    CHECK(data == DataOf(L"before"));
    const std::string line = Failed("3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,x,1,p");
    CHECK(m.Story() == Lines{"RegOpenKeyExW(HKLM, SOFTWARE\\VendorX, 0x1)", line,
                             "RegOpenKeyExW(HKLM, SOFTWARE\\VendorX, 0x1)",
                             "RegQueryValueExW(key1, Port)", line});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A query without a place for the value does no harm") {
    Machine m;
    m.SetRegistryText(Key, L"Port", L"COM3");
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,x,1,p");
    CHECK(m.CallsOf("RegQueryValueExW").size() == 1);
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A value that is asked for without a place for it may be of any length") {
    Machine m;
    m.SetRegistryText(Key, L"Long", std::wstring(1024, L'w'));
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Long,x,1,p");
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A value of 2,048 bytes is read whole, a longer one not at all") {
    Machine m;
    RegistryData data = DataOf(L"before");
    m.SetRegistryText(Key, L"Fits", std::wstring(1023, L'v'));
    m.SetRegistryText(Key, L"Long", std::wstring(1024, L'w'));
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Long,x,1,p", &data);
    CHECK(data == DataOf(L"before"));
    CHECK(m.Log() == Lines{Failed("3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Long,x,1,p").substr(4)});
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Fits,x,1,p", &data);
    CHECK(TextOfRegistryData(data) == std::wstring(1023, L'v'));
    CHECK(m.Log().size() == 1);
}

TEST_CASE("A value without a terminating zero ends where its bytes end") {
    Machine m;
    RegistryData full{};
    full.fill(L'f');
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Full,x,3,p", &full);
    RegistryData data = DataOf(L"before");
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Full,x,3,p", &data);
    CHECK(data == full);
    CHECK(TextOfRegistryData(data) == std::wstring(1024, L'f'));
}

TEST_CASE("What a query brings holds nothing of what was in the data before") {
    Machine m;
    m.SetRegistryText(Key, L"Port", L"C");
    RegistryData data{};
    data.fill(L'b');
    Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,x,1,p", &data);
    CHECK(data == DataOf(L"C"));
}

TEST_CASE("An opcode that is none does nothing, in the registry as well") {
    for (const wchar_t* opcode : {L"0", L"4", L"-1", L"x", L""}) {
        CHECK(StoryOf(opcode + std::wstring(L",HKEY_LOCAL_MACHINE,K,V,x,1,p")) == Lines{});
        // Also when the line outgrows its buffer, filled or as it is written.
        CHECK(StoryOf(opcode + std::wstring(L",%s,K,V,x,1,") + std::wstring(400, L'p')) == Lines{});
        CHECK(StoryOf(opcode + std::wstring(L",R,K,V,x,1,") + std::wstring(1020, L'p')) == Lines{});
    }
}

TEST_CASE("The variables of registry requests are filled in") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nUSERKEY=SOFTWARE\\Maker\r\n[USER_ENV_PARA]\r\nPORT=COM9\r\n");
    Run(L"1,HKEY_CURRENT_USER,%s,Id,[%s],1,$USERKEY,$DEVID");
    MatchedDeviceBaseId = L"USB\\VID_3A9D&PID_9001";
    Run(L"1,HKEY_CURRENT_USER,%s,Now,%s,1,$USERKEY,$DEVID");
    Run(L"1,HKEY_CURRENT_USER,%s,Port,%s,1,$userkey,$PORT");
    const std::wstring key = L"HKEY_CURRENT_USER\\SOFTWARE\\Maker";
    CHECK(m.RegistryText(key, L"Id") == L"[]");
    CHECK(m.RegistryText(key, L"Now") == L"USB\\VID_3A9D&PID_9001");
    CHECK(m.RegistryText(key, L"Port") == L"COM9");
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A request with too few fields is logged with its own text and skipped") {
    CHECK(StoryOf(L"1,HKEY_LOCAL_MACHINE,K,V,x") ==
          Lines{Failed("1,HKEY_LOCAL_MACHINE,K,V,x", "00000057")});
    CHECK(StoryOf(L"3") == Lines{Failed("3", "00000057")});
    CHECK(StoryOf(L",") == Lines{Failed(",", "00000057")});
}

TEST_CASE("A request of six fields and no parameter is logged and skipped") {
    CHECK(StoryOf(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,a,1") ==
          Lines{Failed("1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,a,1", "00000057")});
    CHECK(StoryOf(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,a,1,") ==
          Lines{Failed("2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,a,1,", "00000057")});
}

TEST_CASE("A variable that is longer than the filled line is not taken for whole fields") {
    Machine m;
    // The request stands in the variable. What of it fits ends in its sixth field, the type.
    std::wstring request = L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,COM3,";
    request += std::wstring(259 - request.size() - 1, L' ') + L"1";
    m.WriteIni(L"[USER_ENV_PARA]\r\nREQUEST=" + request + L"1 and more\r\n");
    Run(L"%1,,,,,,$REQUEST");
    CHECK_FALSE(m.RegistryKeyExists(Key));
    CHECK(m.Story() == Lines{Failed(Utf8(request), "000000CE")});
}

TEST_CASE("A variable that fills the line exactly is carried out") {
    Machine m;
    std::wstring request = L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,Port,COM3,";
    request += std::wstring(259 - request.size() - 1, L' ') + L"1";
    m.WriteIni(L"[USER_ENV_PARA]\r\nREQUEST=" + request + L"\r\n");
    Run(L"%1,,,,,,$REQUEST");
    CHECK(m.RegistryText(Key, L"Port") == L"COM3");
}

TEST_CASE("An empty request fails") {
    const Machine m;
    CHECK_FALSE(ExecuteSingleRegeditReq(L"", nullptr));
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("A request whose fields were cut is logged and not carried out") {
    const std::string head = "2,HKEY_LOCAL_MACHINE,";
    CHECK(StoryOf(L"2,HKEY_LOCAL_MACHINE,%s,Sub,x,1," + std::wstring(400, L'k')) ==
          Lines{Failed(head + std::string(259 - head.size(), 'k'), "000000CE")});
}

TEST_CASE("A request that is cut behind the fields it uses is carried out") {
    Machine m;
    Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,a,1," + std::wstring(400, L'p'));
    CHECK(m.RegistryText(Key, L"A") == L"a");
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A request whose six fields fill the buffer to its end is carried out") {
    for (const std::size_t length : {258U, 259U, 260U}) {
        CAPTURE(length);
        Machine m;
        const std::wstring start = L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,";
        const std::wstring data(length - start.size() - 2, L'd');
        Run(start + data + L",1,p");
        if (length <= 259) {
            CHECK(m.RegistryText(Key, L"A") == data);
            CHECK(m.Log() == Lines{});
        } else {
            CHECK_FALSE(m.RegistryKeyExists(Key));
            REQUIRE(m.Log().size() == 1);
            CHECK(m.Log()[0].ends_with("error code 0x000000CE"));
        }
    }
}

TEST_CASE("A request as long as its buffer is logged and not carried out") {
    const std::wstring start = L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,a,1,";
    CHECK(StoryOf(start + std::wstring(1022 - start.size(), L'p')).size() == 2);
    const std::wstring line = start + std::wstring(1023 - start.size(), L'p');
    CHECK(StoryOf(line) == Lines{Failed(std::string(line.begin(), line.end()), "000000CE")});
}

TEST_CASE("Every failing registry call is logged and the request succeeds all the same") {
    for (const char* function : {"RegCreateKeyExW", "RegSetValueExW", "RegOpenKeyExW",
                                 "RegQueryValueExW", "RegDeleteValueW", "RegDeleteKeyW"}) {
        Machine m;
        m.SetRegistryText(Key, L"A", L"a");
        m.MakeRegistryKey(Key + L"\\Sub");
        m.FailCall(function, 1, ERROR_ACCESS_DENIED);
        Run(L"1,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,B,b,1,p");
        Run(L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,x,1,p");
        Run(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX,A,x,1,p");
        Run(L"2,HKEY_LOCAL_MACHINE,SOFTWARE\\VendorX\\,Sub,x,1,p");
        CHECK_MESSAGE(m.Log().size() == 1, function);
        CHECK(m.LeakSummary() == "");
        CHECK(m.Misuses() == Lines{});
    }
}

TEST_CASE("A registry section runs its lines, failing ones included") {
    Machine m;
    m.WriteIni(L"[PROCESS]\r\nOPERNUM=4\r\n"
               L"OPER00=1,%s,SOFTWARE\\VendorX,A,a,1,HKEY_LOCAL_MACHINE\r\n"
               L"OPER01=2,HKEY_LOCAL_MACHINE,SOFTWARE\\None,A,a,1,p\r\n"
               L"OPER02=too,short\r\n"
               L"OPER03=1,%s,SOFTWARE\\VendorX,B,b,1,HKEY_LOCAL_MACHINE\r\n");
    CHECK(RunRegeditSection(L"PROCESS"));
    CHECK(m.RegistryText(Key, L"A") == L"a");
    CHECK(m.RegistryText(Key, L"B") == L"b");
    CHECK(m.Log().size() == 2);
}

TEST_CASE("A registry section without lines succeeds, one without a name does not") {
    Machine m;
    CHECK(RunRegeditSection(L"PRE_REG_OPER"));
    m.WriteIni(L"[PRE_REG_OPER]\r\nOPERNUM=0\r\nOPER00=1,HKEY_LOCAL_MACHINE,K,V,x,1,p\r\n");
    CHECK(RunRegeditSection(L"PRE_REG_OPER"));
    CHECK(m.Story() == Lines{});
    CHECK_FALSE(RunRegeditSection(L""));
}

TEST_CASE("Registry data without a zero is read to its end") {
    RegistryData data{};
    CHECK(TextOfRegistryData(data) == L"");
    data.fill(L'x');
    CHECK(TextOfRegistryData(data).size() == 1024);
    data[3] = L'\0';
    CHECK(TextOfRegistryData(data) == L"xxx");
}
