// Whole runs of the program with every call failing once.
#include "common/run_state.h"
#include "support/doctest_support.h"
#include "support/torture.h"
#include "torture/closing.h"

using namespace machine;

// The program's own entry.
int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int showCommand);

namespace {

const std::wstring Modem = L"USB\\VID_3A9D&PID_9001";

int Start(std::wstring commandLine) {
    return wWinMain(nullptr, nullptr, commandLine.data(), SW_SHOW);
}

void Describe(Machine& m, const wchar_t* mode) {
    m.WriteIni(L"[INSTALL]\r\nCOPYOEMTIMEOUT=60\r\nMODE=" + std::wstring(mode) +
               L"\r\n[ENUM]\r\nMAXCYCLE=1\r\n");
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Ports", .Ids = {Modem}});
    m.AddDevice(Device{.InstanceId = Modem + L"\\1", .Class = L"USB"});
}

Scenario InstallScenario(const char* name, const wchar_t* mode) {
    return {.Name = name,
            .Describe = [mode](Machine& m) { Describe(m, mode); },
            .Run = [] { return Start(L"-i"); },
            .Check = torture::CheckClosing,
            .MayWaitForEver = torture::WorkerSignals()};
}

} // namespace

TEST_CASE("An install run that stages survives every failing call") {
    FailEachCall(InstallScenario("-i, mode 0", L"0"));
}

TEST_CASE("A direct install run survives every failing call") {
    FailEachCall(InstallScenario("-i, mode 1", L"1"));
}

TEST_CASE("An install run that stages and may fall back survives every failing call") {
    FailEachCall(InstallScenario("-i, mode 2", L"2"));
}

TEST_CASE("An uninstall run survives every failing call") {
    FailEachCall({.Name = "-u",
                  .Describe =
                      [](Machine& m) {
                          // Told otherwise, an uninstall gives up.
                          m.Windows().DriverDetail = Variants::SizeQuery::TooSmall;
                          Describe(m, L"1");
                          m.AddOemInf(Inf{.Class = L"Ports", .Ids = {Modem}});
                          m.WriteText(L"D:\\Packet\\WIN7\\modem.sys", L"driver");
                      },
                  .Run = [] { return Start(L"-u"); },
                  .Check = torture::CheckClosing});
}
