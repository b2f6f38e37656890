// The machine's own tests: the program's way into it, and the journal.
#include "machine/machine.h"
#include "support/doctest_support.h"

#include "config/config_reader.h"
#include "inf/section_reader.h"

using namespace machine;

TEST_CASE("The program's calls arrive at the machine") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=7\r\n");
    CHECK(ReadConfigInt(L"ENUM", L"MAXCYCLE") == 7);
    CHECK(m.CallsOf("GetPrivateProfileIntW").size() == 6);
    CHECK(m.CallsOf("GetFileVersionInfoW") == Lines{"GetFileVersionInfoW(ntoskrnl.exe, 0, 2600)"});
}

TEST_CASE("The program reads an INF of its packet through the system's parser") {
    Machine m;
    const std::wstring path = m.AddInf(L"WIN7\\modem.inf", Inf{.Ids = {L"USB\\VID_3A9D&PID_9001"}});
    InfLineList lines;
    CHECK(GetInfSectionText(path, L"Models.NTamd64", lines));
    REQUIRE(lines.size() == 1);
    CHECK(lines[0].Fields == TextList{L"Test device", L"Install", L"USB\\VID_3A9D&PID_9001"});
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
}
