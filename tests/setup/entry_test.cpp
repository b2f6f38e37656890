// The entry: switches, window texts, hook, rollback, and how every run ends.
#include "common/run_state.h"
#include "setup/run_program.h"
#include "support/doctest_support.h"

#include <algorithm>

using namespace machine;

namespace {

constexpr auto* Failed = "Setup: Setup process fail,see more detail in log file";
constexpr auto* Started = "LOG Setup: Main thread started, thread id 0x00000100";

// The lines of the story that begin with one of these.
Lines Landmarks(const Machine& m, std::initializer_list<std::string_view> beginnings) {
    Lines found;
    for (const std::string& line : m.Story()) {
        if (std::any_of(beginnings.begin(), beginnings.end(), [&line](std::string_view beginning) {
                return line.compare(0, beginning.size(), beginning) == 0;
            })) {
            found.push_back(line);
        }
    }
    return found;
}

} // namespace

TEST_CASE("Without a switch the program shows its version, touches nothing and pauses") {
    for (const wchar_t* line : {L"", L"i", L"/i", L"  ", L"install please"}) {
        Machine m;
        SetUpModem(m, L"[UI]\r\nNEEDUI=1\r\n");
        CHECK(RunProgram(line) == 0);
        CHECK(m.Story() == Lines{Started, "MessageBoxW(null, Version: 3.1.16.0428, Version, 0)",
                                 std::string("LOG ") + Failed, "Sleep(2000)", "CleanHook()"});
        CHECK(m.CallsOf("GetPrivateProfileIntW") == Lines{});
        CHECK(m.CallsOf("GetPrivateProfileStringW") == Lines{});
    }
}

TEST_CASE("A switch that is not known is told, and nothing else happens") {
    for (const wchar_t* line : {L"-", L"-i ", L"-i x", L"a-b -i", L"-i -u", L"-x", L"--i", L"-ii",
                                L"\"-i\"", L"-\x0131"}) {
        Machine m;
        SetUpModem(m, L"[UI]\r\nNEEDUI=1\r\n");
        CHECK(RunProgram(line) == 0);
        const Lines story = m.Story();
        REQUIRE(story.size() == 5);
        CHECK(story[1].compare(0, 40, "LOG Setup: Invalid command line ", 0, 40) > 0);
        CHECK(m.Messages().empty());
        CHECK(EndsInPauseAfter(m, Failed));
        CHECK(m.CallsOf("GetPrivateProfileIntW") == Lines{});
    }
}

TEST_CASE("An unknown switch is told with the whole command line, however long") {
    Machine m;
    const std::string more(400, 'y');
    CHECK(RunProgram(L"C:\\x y -i" + std::wstring(400, L'y')) == 0);
    CHECK(m.Logged("Setup: Invalid command line C:\\x y -i" + more));
}

TEST_CASE("The case of a switch and what stands before it do not count") {
    for (const wchar_t* line : {L"-i", L"-I", L"x -i", L" \t-I"}) {
        Machine m;
        SetUpModem(m, L"[INSTALL]\r\nMODE=3\r\n");
        CHECK(RunProgram(line) == 1);
        CHECK(SetupMode == 1);
        CHECK(ShownTexts(m) == Lines{"STR_INSTALL", "STR_INSTALL_SUCCESS"});
    }
    for (const wchar_t* line : {L"-u", L"-U", L"x -u"}) {
        Machine m;
        SetUpInstalledModem(m, L"");
        CHECK(RunProgram(line) == 1);
        CHECK(SetupMode == 0);
        CHECK(ShownTexts(m) == Lines{"STR_UNINSTALL", "STR_UNINSTALL_SUCCESS"});
    }
}

TEST_CASE("A run that ends well tells its seconds, pauses and cleans the hook") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=3\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(EndsInPauseAfter(m, "Setup: Setup process complete, total 0 seconds used"));
    CHECK(m.Now() == 2000ms);
}

TEST_CASE("A medium that vanishes must not stop a run with a box") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=3\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(m.ErrorMode() == (SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX));
}

TEST_CASE("The seconds of a run are whole seconds of calendar time") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=1\r\n[ENUM]\r\nSCSIRSPTIMEOUT=70\r\n");
    CHECK(RunProgram(L"-i") == 1);
    // 70 to let the system find devices, 5 until they appear.
    CHECK(EndsInPauseAfter(m, "Setup: Setup process complete, total 75 seconds used"));
}

TEST_CASE("The seconds of a run count on when the low half of the file time wraps around") {
    Machine m;
    // 30 seconds before the wrap.
    m.SetCalendar(0x01DC'0000'0000'0000ULL - 30 * 10'000'000ULL);
    SetUpModem(m, L"[INSTALL]\r\nMODE=1\r\n[ENUM]\r\nSCSIRSPTIMEOUT=70\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(EndsInPauseAfter(m, "Setup: Setup process complete, total 75 seconds used"));
}

TEST_CASE("The staging threads find the main thread, whose id the program notes at its start") {
    Machine m;
    MainThreadId = 0;
    SetUpModem(m, L"[INSTALL]\r\nMODE=0\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(MainThreadId == MainThread);
    CHECK(m.Logged("PreInstall: Message 0x7EB from thread 0x00000108"));
}

TEST_CASE("The registry operations of PROCESS run in both kinds of run and cannot fail one") {
    constexpr auto* Ini = L"[PROCESS]\r\nOPERNUM=2\r\n"
                          L"OPER00=1,HKEY_CURRENT_USER,%1,a,,1,Software\\Seen\r\n"
                          L"OPER01=2,HKEY_CURRENT_USER,%1,a,,1,Software\\Missing\r\n"
                          L"[INSTALL]\r\nMODE=3\r\n";
    for (const wchar_t* line : {L"-i", L"-u"}) {
        Machine m;
        SetUpInstalledModem(m, Ini);
        CHECK(RunProgram(line) == 1);
        CHECK(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\Software\\Seen"));
    }
}

TEST_CASE("The window opens before anything else and shows how far the run has come") {
    Machine m;
    SetUpModem(m, L"[UI]\r\nNEEDUI=1\r\n[INSTALL]\r\nMODE=1\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(ShownTexts(m) == Lines{"STR_PREPARE", "STR_INSTALL", "STR_INSTALL_SUCCESS"});
    REQUIRE(m.LastDialog() != nullptr);
    CHECK(m.WindowOf(m.LastDialog()).Text(1001) == L"STR_INSTALL_SUCCESS");
    CHECK(m.RunningThreads() == 1);
}

TEST_CASE("The mode of the install decides over the hook") {
    for (const auto& [mode, hooks] : {std::pair{L"0", 0U}, std::pair{L"1", 1U}, std::pair{L"2", 1U},
                                      std::pair{L"3", 1U}, std::pair{L"-2", 1U}}) {
        Machine m;
        SetUpModem(m, L"[INSTALL]\r\nMODE=" + std::wstring(mode) + L"\r\n");
        CHECK(RunProgram(L"-i") == 1);
        CHECK(m.CallsOf("SetHook").size() == hooks);
        CHECK(m.CallsOf("CleanHook").size() == 1);
    }
}

TEST_CASE("The hook gets the library beside the executable, before anything is cleaned") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=3\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(m.Story().at(1) == "SetHook(D:\\Packet\\Vantrel64.DLL)");
}

TEST_CASE("A hook that cannot be installed ends the run without install and rollback") {
    for (const wchar_t* mode : {L"1", L"2", L"3"}) {
        Machine m;
        SetUpModem(m, L"[INSTALL]\r\nMODE=" + std::wstring(mode) + L"\r\n");
        m.FailCall("SetHook", 1, ERROR_ACCESS_DENIED);
        CHECK(RunProgram(L"-i") == 0);
        CHECK(m.Story() ==
              Lines{Started, "SetHook(D:\\Packet\\Vantrel64.DLL) -> fails 0x5",
                    "LOG InstallHook: Install hook D:\\Packet\\Vantrel64.DLL fail, error code is "
                    "0x00000005",
                    std::string("LOG ") + Failed, "Sleep(2000)", "CleanHook()"});
        CHECK(ShownTexts(m) == Lines{});
    }
}

TEST_CASE("A hook that cannot be cleaned is only told") {
    Machine m;
    SetUpInstalledModem(m, L"");
    m.FailCall("CleanHook", 1, ERROR_ACCESS_DENIED);
    CHECK(RunProgram(L"-u") == 1);
    CHECK(m.Log().back() == "CHookHelper: UnInstall hook fail, error code is 0x00000005");
}

TEST_CASE("An uninstall does not ask for the mode of the install and sets no hook") {
    Machine m;
    SetUpInstalledModem(m, L"[INSTALL]\r\nMODE=1\r\n");
    CHECK(RunProgram(L"-u") == 1);
    CHECK(InstallModeValue == 2);
    CHECK(m.CallsOf("SetHook") == Lines{});
    for (const std::string& call : m.CallsOf("GetPrivateProfileIntW")) {
        CHECK(call.find("MODE,") == std::string::npos);
    }
}

TEST_CASE("An uninstall ends with a look for devices") {
    Machine m;
    SetUpInstalledModem(m, L"");
    CHECK(RunProgram(L"-u") == 1);
    CHECK(
        Landmarks(m, {"CM_", "LOG Setup", "Sleep", "LOG RemoveFile: File C:\\windows\\system32"}) ==
        Lines{Started,
              "LOG RemoveFile: File C:\\windows\\system32\\drivers\\modem.sys was deleted "
              "successfully",
              "CM_Locate_DevNodeW(null, 0)", "CM_Reenumerate_DevNode(0)",
              "LOG Setup: Setup process complete, total 0 seconds used", "Sleep(2000)"});
}

TEST_CASE("An uninstall that fails shows so and looks for no devices") {
    Machine m;
    SetUpInstalledModem(m, L"");
    m.FailCall("SetupDiGetClassDevsW", 1, ERROR_ACCESS_DENIED);
    CHECK(RunProgram(L"-u") == 0);
    CHECK(ShownTexts(m) == Lines{"STR_UNINSTALL", "STR_UNINSTALL_FAIL"});
    CHECK(m.CallsOf("CM_Locate_DevNodeW") == Lines{});
    CHECK(EndsInPauseAfter(m, Failed));
}

TEST_CASE("A root device that is not found after the uninstall fails the run without a text") {
    Machine m;
    SetUpInstalledModem(m, L"");
    m.FailCall("CM_Locate_DevNodeW", 1, ERROR_GEN_FAILURE);
    CHECK(RunProgram(L"-u") == 0);
    CHECK(ShownTexts(m) == Lines{"STR_UNINSTALL"});
    CHECK(m.Logged("RefreshDeviceSet: Locate device root node fail,error code 0x0000001F"));
    CHECK(m.CallsOf("CM_Reenumerate_DevNode") == Lines{});
    CHECK(EndsInPauseAfter(m, Failed));
}

TEST_CASE("A look for devices that fails after the uninstall fails the run without a text") {
    Machine m;
    SetUpInstalledModem(m, L"");
    m.FailCall("CM_Reenumerate_DevNode", 1, ERROR_GEN_FAILURE);
    CHECK(RunProgram(L"-u") == 0);
    CHECK(ShownTexts(m) == Lines{"STR_UNINSTALL"});
    CHECK(m.Logged("RefreshDeviceSet: Reenumerate device node fail,error code 0x0000001F"));
    CHECK(EndsInPauseAfter(m, Failed));
}

TEST_CASE("A failed install is rolled back with the sections of the uninstall") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=3\r\n"
                  L"[PRE_REG_OPER.INSTALL]\r\nOPERNUM=1\r\n"
                  L"OPER00=1,HKEY_CURRENT_USER,%1,a,,1,Software\\Install\r\n"
                  L"[PRE_REG_OPER.UNINSTALL]\r\nOPERNUM=1\r\n"
                  L"OPER00=1,HKEY_CURRENT_USER,%1,a,,1,Software\\Uninstall\r\n");
    m.RemoveFile(L"D:\\Packet\\WIN7\\modem.inf");
    m.RemoveFile(L"D:\\Packet\\WIN7\\net.inf");
    CHECK(RunProgram(L"-i") == 0);
    CHECK(SetupMode == 0);
    CHECK_FALSE(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\Software\\Install"));
    CHECK(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\Software\\Uninstall"));
    CHECK(ShownTexts(m) == Lines{"STR_INSTALL_FAIL"});
    CHECK(Landmarks(m, {"LOG CleanSystemEnv", "LOG Setup", "RegCreateKeyExW"}) ==
          Lines{Started,
                "LOG CleanSystemEnv: Get driver packet D:\\Packet\\WIN7\\ inf set fail,error code "
                "0x00000002",
                "LOG Setup: Setup process fail,begin rollback...",
                "RegCreateKeyExW(HKCU, Software\\Uninstall, 0, 0x2)",
                std::string("LOG ") + Failed});
    CHECK(EndsInPauseAfter(m, Failed));
}

TEST_CASE("A rollback that fails changes nothing about the end of the run") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=3\r\n");
    m.FailCallsFrom("SetupDiGetClassDevsW", 1, ERROR_ACCESS_DENIED);
    CHECK(RunProgram(L"-i") == 0);
    CHECK(m.Logged("CleanDevice: Get device set fail!,error code : 0x00000005"));
    CHECK(m.Logged("UnInstall: Get device calss set fail!,error code : 0X00000005"));
    CHECK(ShownTexts(m) == Lines{"STR_INSTALL_FAIL"});
    CHECK(EndsInPauseAfter(m, Failed));
}

TEST_CASE("A run that makes too many calls is ended and reported, whatever it was just doing") {
    std::int64_t budget = 0;
    // Not each one: they are many, and alike.
    for (bool ended = true; ended; budget += 1 + budget / 8) {
        REQUIRE(budget < 20'000);
        Machine m;
        SetUpModem(m, L"[UI]\r\nNEEDUI=1\r\n[INSTALL]\r\nMODE=2\r\n");
        m.SetStepBudget(budget, 24h);
        try {
            RunProgram(L"-i");
            ended = false;
        } catch (const StepBudgetExceeded& exceeded) {
            CHECK(exceeded.Call != "");
        } catch (const WaitNeverEnds&) {
            // One of the other threads was ended, and the main thread waited for it.
            CHECK(m.ThreadFailure() != "");
        }
        m.EndThreads();
        CHECK(m.LeakSummary() == "");
    }
    CHECK(budget > 100);
}

TEST_CASE("A run that lets too much time pass is ended and reported") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=1\r\n[ENUM]\r\nSCSIRSPTIMEOUT=7200\r\n");
    m.SetStepBudget(100'000, 1h);
    CHECK_THROWS_AS(RunProgram(L"-i"), StepBudgetExceeded);
    CHECK(m.LeakSummary() == "");
}
