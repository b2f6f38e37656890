// Every call of the scripted operations fails once: the sections end, leave nothing open, write no
// line but their own, and touch no file or key but those of the script.
#include "machine/guarded_memory.h"
#include "machine/machine.h"
#include "operations/file_operations.h"
#include "operations/registry_operations.h"
#include "support/doctest_support.h"

#include <array>

using namespace machine;

namespace {

constexpr std::array<DWORD, 2> Errors{ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY};

constexpr auto* Script =
    L"[PRE_REG_OPER]\r\nOPERNUM=4\r\n"
    L"OPER00=1,%s,SOFTWARE\\%sVendorX,A,a,1,HKEY_LOCAL_MACHINE,$Wow6432Node\r\n"
    L"OPER01=3,%s,SOFTWARE\\VendorX,A,a,1,HKEY_CURRENT_USER\r\n"
    L"OPER02=2,%s,SOFTWARE\\VendorX,A,a,1,HKEY_CURRENT_USER\r\n"
    L"OPER03=2,%s,SOFTWARE\\VendorX\\,Sub,a,1,HKEY_CURRENT_USER\r\n"
    L"[PRE_FILE_OPER]\r\nOPERNUM=4\r\n"
    L"OPER00=3,%s,a.sys,%s,a.sys,$CD,$OSDRIVER\r\n"
    L"OPER01=1,%sMaker,,x,x,$WINDOWS\r\n"
    L"OPER02=1,%sMaker\\,b.txt,x,x,$WINDOWS\r\n"
    L"OPER03=2,%s,c.txt,x,x,$DATA\r\n"
    L"[USER_ENV_PARA]\r\nDATA=C:\\data\\\r\n";

// What the script works on, as it is before a run.
void Prepare(Machine& m) {
    m.WriteBytes(L"D:\\Packet\\a.sys", "driver");
    m.WriteBytes(L"C:\\data\\c.txt", "c");
    m.WriteBytes(L"C:\\data\\stays.txt", "stays");
    m.SetRegistryText(L"HKEY_CURRENT_USER\\SOFTWARE\\VendorX", L"A", L"a");
    m.SetRegistryText(L"HKEY_CURRENT_USER\\SOFTWARE\\VendorX\\Sub", L"B", L"b");
    m.SetRegistryText(L"HKEY_CURRENT_USER\\SOFTWARE", L"Stays", L"stays");
    m.ForgetJournal();
}

// One run in which the k-th call fails (0: none); the number of its calls.
int RunFailing(Machine& m, int k, DWORD error) {
    Prepare(m);
    const int before = m.CountedCalls();
    m.FailAnyCall(k == 0 ? 0 : before + k, error);
    CHECK(RunRegeditSection(L"PRE_REG_OPER"));
    CHECK(RunFileOperSection(L"PRE_FILE_OPER"));
    const UnguardedScope unguarded;
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    CHECK(m.ReadBytes(L"C:\\data\\stays.txt") == "stays");
    CHECK(m.ReadBytes(L"D:\\Packet\\a.sys") == "driver");
    CHECK(m.RegistryText(L"HKEY_CURRENT_USER\\SOFTWARE", L"Stays") == L"stays");
    for (const std::string& line : m.Log()) {
        const bool known =
            line.starts_with("ExecutSingleFileOper: File oper req ") ||
            line.starts_with("ExecuteSingleRegeditReq: Register operation fail, req ");
        CHECK_MESSAGE(known, line);
    }
    return m.CountedCalls() - before;
}

} // namespace

TEST_CASE("Whichever call fails, the scripted sections end and touch nothing else") {
    Machine m;
    m.SetStepBudget(50'000'000, std::chrono::hours(1));
    m.WriteIni(Script);
    // A setting that cannot be read is one that is not there.
    m.CountSettingsToo();
    const int calls = RunFailing(m, 0, 0);
    int runs = 0;
    for (const DWORD error : Errors) {
        for (int k = 1; k <= calls; ++k, ++runs) {
            CAPTURE(k);
            CAPTURE(error);
            RunFailing(m, k, error);
        }
    }
    MESSAGE(calls, " calls, ", runs, " runs with one of them failing");
}
