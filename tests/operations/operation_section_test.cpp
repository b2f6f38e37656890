// Sections of numbered operation lines.
#include "operations/operation_section.h"

#include "common/run_state.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

// The lines that a section's run handed out; the runner stops at the line "stop".
WideTexts HandedOut;

bool HandOut(const std::wstring& line) {
    HandedOut.push_back(line);
    return line != L"stop";
}

bool Run(Machine& m, const std::wstring& ini) {
    m.WriteIni(ini);
    HandedOut.clear();
    return RunOperationLines(L"S", HandOut);
}

// The keys that were read in the plain section, in order.
Lines KeysRead(const Machine& m) {
    Lines keys;
    for (const std::string& call : m.CallsOf("GetPrivateProfileStringW")) {
        const std::string start = "GetPrivateProfileStringW(S, ";
        if (call.starts_with(start)) {
            keys.push_back(call.substr(start.size(), call.find(',', start.size()) - start.size()));
        }
    }
    return keys;
}

} // namespace

TEST_CASE("Operation keys have two digits, more from 100 on") {
    CHECK(OperationKey(0) == L"OPER00");
    CHECK(OperationKey(9) == L"OPER09");
    CHECK(OperationKey(10) == L"OPER10");
    CHECK(OperationKey(99) == L"OPER99");
    CHECK(OperationKey(100) == L"OPER100");
}

TEST_CASE("Lines run in order, missing and empty ones are passed over, none beyond the count") {
    Machine m;
    CHECK(Run(m, L"[S]\r\nOPERNUM=4\r\nOPER00=a\r\nOPER02=c\r\nOPER03=\r\nOPER04=e\r\n"));
    CHECK(HandedOut == WideTexts{L"a", L"c"});
    CHECK(KeysRead(m) == Lines{"OPER00", "OPER01", "OPER02", "OPER03"});
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A line is read into a buffer of 1,024 characters") {
    Machine m;
    Run(m, L"[S]\r\nOPERNUM=1\r\nOPER00=" + std::wstring(5000, L'l') + L"\r\n");
    REQUIRE(HandedOut.size() == 1);
    CHECK(HandedOut[0].size() == 1023);
    CHECK(m.CallsOf("GetPrivateProfileStringW").back() ==
          "GetPrivateProfileStringW(S, OPER00, 1024, D:\\Packet\\Setup.ini)");
}

TEST_CASE("The first line that fails stops its section") {
    Machine m;
    CHECK_FALSE(Run(m, L"[S]\r\nOPERNUM=3\r\nOPER00=a\r\nOPER01=stop\r\nOPER02=c\r\n"));
    CHECK(HandedOut == WideTexts{L"a", L"stop"});
}

TEST_CASE("A count of 0, a negative one and none run nothing") {
    for (const wchar_t* count : {L"OPERNUM=0\r\n", L"OPERNUM=-3\r\n", L"OPERNUM=x\r\n", L""}) {
        Machine m;
        CHECK(Run(m, std::wstring(L"[S]\r\n") + count + L"OPER00=a\r\n"));
        CHECK(HandedOut.empty());
        CHECK(m.CallsOf("GetPrivateProfileStringW") == Lines{});
    }
}

TEST_CASE("Without a section name nothing runs and nothing is read") {
    const Machine m;
    HandedOut.clear();
    CHECK_FALSE(RunOperationLines(L"", HandOut));
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("A count mistyped by millions comes to an end") {
    Machine m;
    // Behind the last line nothing is read from the file any more: that would only take time.
    m.FailCallsFrom("GetPrivateProfileStringW", 1000, ERROR_NOT_ENOUGH_MEMORY);
    CHECK(Run(m, L"[S]\r\nOPERNUM=2147483647\r\nOPER00=a\r\nOPER120=b\r\n"));
    CHECK(HandedOut == WideTexts{L"a", L"b"});
}

TEST_CASE("The lines of a section follow the run mode") {
    Machine m;
    const std::wstring ini = L"[S.INSTALL]\r\nOPERNUM=1\r\nOPER00=i\r\n"
                             L"[S.UNINSTALL]\r\nOPERNUM=1\r\nOPER00=u\r\n";
    Run(m, ini);
    CHECK(HandedOut == WideTexts{L"i"});
    SetupMode = 0;
    Run(m, ini);
    CHECK(HandedOut == WideTexts{L"u"});
}

TEST_CASE("A line that fills its buffer may be cut, a shorter one is not") {
    CHECK_FALSE(MayBeCut(L""));
    CHECK_FALSE(MayBeCut(std::wstring(1022, L'l')));
    CHECK(MayBeCut(std::wstring(1023, L'l')));
    CHECK(MayBeCut(std::wstring(5000, L'l')));
}
