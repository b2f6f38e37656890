// The install sequence in all modes, as whole runs: what each does, and what follows when one of
// its steps fails.
#include "common/run_state.h"
#include "setup/run_program.h"
#include "support/doctest_support.h"

#include <algorithm>

using namespace machine;

namespace {

constexpr auto* Failed = "Setup: Setup process fail,see more detail in log file";
constexpr auto* Rollback = "Setup: Setup process fail,begin rollback...";

std::wstring Mode(const wchar_t* mode, const std::wstring& more = {}) {
    return L"[INSTALL]\r\nMODE=" + std::wstring(mode) + L"\r\n" + more;
}

// Scripts for all four sections of an install.
std::wstring Scripts() {
    std::wstring ini;
    for (const wchar_t* section : {L"PRE_REG_OPER", L"POST_REG_OPER"}) {
        ini += L"[" + std::wstring(section) + L".INSTALL]\r\nOPERNUM=1\r\n" +
               L"OPER00=1,HKEY_CURRENT_USER,%1,a,,1,Software\\" + section + L"\r\n";
    }
    for (const wchar_t* section : {L"PRE_FILE_OPER", L"POST_FILE_OPER"}) {
        ini += L"[" + std::wstring(section) + L".INSTALL]\r\nOPERNUM=1\r\n" +
               L"OPER00=1,%1,%2,,,D:\\," + section + L"\r\n";
    }
    return ini;
}

std::ptrdiff_t Position(const Lines& lines, std::string_view part, std::ptrdiff_t from = 0) {
    const auto found =
        std::find_if(lines.begin() + from, lines.end(), [part](const std::string& line) {
            return line.find(part) != std::string::npos;
        });
    return found == lines.end() ? -1 : found - lines.begin();
}

// The parts occur in this order, each after the one before.
void CheckOrder(const Lines& lines, std::initializer_list<std::string_view> parts) {
    std::ptrdiff_t from = 0;
    for (const std::string_view part : parts) {
        const std::ptrdiff_t position = Position(lines, part, from);
        CAPTURE(std::string(part));
        CHECK(position >= 0);
        from = std::max(position, from);
    }
}

// A run that failed: exit code, rollback, its text and the end.
void CheckRolledBack(Machine& m, int exitCode) {
    CHECK(exitCode == 0);
    CHECK(SetupMode == 0);
    CheckOrder(m.Journal(), {Rollback, "GetCompositeDeviceIDFromInf: kkkkkkkkkk",
                             "STR_INSTALL_FAIL", Failed, "Sleep(2000)", "CleanHook()"});
    const Lines texts = ShownTexts(m);
    CHECK(std::count(texts.begin(), texts.end(), "STR_UNINSTALL") == 0);
    CHECK(texts.back() == "STR_INSTALL_FAIL");
    CHECK(EndsInPauseAfter(m, Failed));
    CHECK(m.Misuses() == Lines{});
}

} // namespace

TEST_CASE("Staging copies the INF files after a look for devices") {
    for (const wchar_t* mode : {L"0", L"2"}) {
        Machine m;
        SetUpModem(m, Mode(mode, Scripts()));
        CHECK(RunProgram(L"-i") == 1);
        CheckOrder(m.Journal(),
                   {"OpenSCManagerW", "FindFirstFileW(C:\\Windows\\INF\\OEM*.INF)", "PRE_REG_OPER",
                    "CreateFileW(D:\\PRE_FILE_OPER", "STR_INSTALL", "CM_Locate_DevNodeW(null, 0)",
                    "CM_Reenumerate_DevNode(0)", "PreInstall: Inf to copy",
                    "SetupCopyOEMInfW(D:\\Packet\\WIN7\\modem.inf",
                    "SetupCopyOEMInfW(D:\\Packet\\WIN7\\net.inf", "PreInstall: Message 0x7EB",
                    "SetReInstallFlag: OK", "OpenSCManagerW", "Software\\POST_REG_OPER",
                    "CreateFileW(D:\\POST_FILE_OPER", "STR_INSTALL_SUCCESS",
                    "Setup: Setup process complete"});
        CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
        CHECK(m.Exists(L"C:\\Windows\\INF\\oem1.inf"));
        CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW") == Lines{});
        m.LetThreadsFinish();
        CHECK(m.LeakSummary() == "");
    }
}

TEST_CASE("The direct way installs each function with the INF that lists it") {
    Machine m;
    SetUpModem(m, Mode(L"1", Scripts()));
    CHECK(RunProgram(L"-i") == 1);
    CHECK(m.At(PortFunction).InstalledInf == L"D:\\Packet\\WIN7\\modem.inf");
    CHECK(m.At(NetFunction).InstalledInf == L"D:\\Packet\\WIN7\\net.inf");
    const Lines story = m.Story();
    CheckOrder(m.Journal(),
               {"OpenSCManagerW", "PRE_REG_OPER", "CreateFileW(D:\\PRE_FILE_OPER", "STR_INSTALL",
                "RefreshDeviceSet: Waiting", "AutoDeviceMatch", "UpdateInstall: Inf",
                "UpdateDriverForPlugAndPlayDevicesW", "OpenSCManagerW", "Software\\POST_REG_OPER",
                "CreateFileW(D:\\POST_FILE_OPER", "STR_INSTALL_SUCCESS"});
    // No look for devices before the one that belongs to the direct way.
    CHECK(Position(story, "CM_Reenumerate_DevNode") > Position(story, "RefreshDeviceSet: Waiting"));
    CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("Any other mode installs nothing, runs the scripts and ends well") {
    for (const wchar_t* mode : {L"3", L"-2", L"256"}) {
        Machine m;
        SetUpModem(m, Mode(mode, Scripts()));
        CHECK(RunProgram(L"-i") == 1);
        CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
        CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW") == Lines{});
        CHECK(m.CallsOf("CM_Reenumerate_DevNode") == Lines{});
        CHECK(m.CallsOf("OpenSCManagerW").size() == 2);
        CHECK(m.Exists(L"D:\\POST_FILE_OPER"));
        CHECK(ShownTexts(m) == Lines{"STR_INSTALL", "STR_INSTALL_SUCCESS"});
    }
}

TEST_CASE("A serial service manager that does not answer does not fail an install") {
    Machine m;
    SetUpModem(m, Mode(L"3"));
    m.FailCallsFrom("OpenSCManagerW", 1, ERROR_ACCESS_DENIED);
    CHECK(RunProgram(L"-i") == 1);
}

TEST_CASE("A file operation that fails does not fail an install") {
    Machine m;
    SetUpModem(m, Mode(L"3", Scripts()));
    m.FailCall("CreateFileW", 1, ERROR_ACCESS_DENIED);
    m.FailCall("CreateFileW", 2, ERROR_ACCESS_DENIED);
    CHECK(RunProgram(L"-i") == 1);
    CHECK(m.Logged("ExecutSingleFileOper: File oper req 1,D:\\,PRE_FILE_OPER,,,D:\\,PRE_FILE_OPER "
                   "fail,error code 0x00000005"));
    CHECK(
        m.Logged("ExecutSingleFileOper: File oper req 1,D:\\,POST_FILE_OPER,,,D:\\,POST_FILE_OPER "
                 "fail,error code 0x00000005"));
}

TEST_CASE("A registry operation that the system refuses is told and does not fail an install") {
    Machine m;
    SetUpModem(m, Mode(L"3", Scripts()));
    m.FailCallsFrom("RegCreateKeyExW", 1, ERROR_ACCESS_DENIED);
    CHECK(RunProgram(L"-i") == 1);
}

TEST_CASE("A packet without INF files fails the install at its cleanup") {
    for (const wchar_t* mode : {L"0", L"1", L"2", L"3"}) {
        Machine m;
        SetUpModem(m, Mode(mode));
        m.RemoveFile(L"D:\\Packet\\WIN7\\modem.inf");
        m.RemoveFile(L"D:\\Packet\\WIN7\\net.inf");
        CheckRolledBack(m, RunProgram(L"-i"));
        CHECK(ShownTexts(m) == Lines{"STR_INSTALL_FAIL"});
        CHECK(m.LeakSummary() == "");
    }
}

TEST_CASE("A root device that is not found fails the staging before it begins") {
    for (const wchar_t* mode : {L"0", L"2"}) {
        Machine m;
        SetUpModem(m, Mode(mode));
        m.FailCall("CM_Locate_DevNodeW", 1, ERROR_GEN_FAILURE);
        CheckRolledBack(m, RunProgram(L"-i"));
        CHECK(m.Logged("RefreshDeviceSet: Locate device root node fail,error code 0x0000001F"));
        CHECK(m.CallsOf("CM_Reenumerate_DevNode") == Lines{});
        CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
        CHECK(ShownTexts(m) == Lines{"STR_INSTALL", "STR_INSTALL_FAIL"});
    }
}

TEST_CASE("A look for devices that fails ends the staging before it begins") {
    for (const wchar_t* mode : {L"0", L"2"}) {
        Machine m;
        SetUpModem(m, Mode(mode));
        m.FailCall("CM_Reenumerate_DevNode", 1, ERROR_GEN_FAILURE);
        CheckRolledBack(m, RunProgram(L"-i"));
        CHECK(m.Logged("RefreshDeviceSet: Reenumerate device node fail,error code 0x0000001F"));
        CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
    }
}

TEST_CASE("A copy that fails takes back in the rollback what was copied before it") {
    Machine m;
    SetUpModem(m, Mode(L"0"));
    m.FailCall("SetupCopyOEMInfW", 2, ERROR_ACCESS_DENIED);
    CheckRolledBack(m, RunProgram(L"-i"));
    CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW") == Lines{});
    CHECK(m.Logged("UnInstall: Normal uninstall inf C:\\WINDOWS\\INF\\OEM0.INF OK"));
    CHECK(m.Files(L"C:\\Windows") == WideTexts{L"C:\\Windows\\INF\\usb.inf"});
}

TEST_CASE("With mode 2 a failed staging is followed by the direct way and still rolled back") {
    Machine m;
    SetUpModem(m, Mode(L"2"));
    m.FailCall("SetupCopyOEMInfW", 1, ERROR_ACCESS_DENIED);
    CheckRolledBack(m, RunProgram(L"-i"));
    CheckOrder(m.Journal(),
               {"PreInstall: Message 0x7EA", "UpdateDriverForPlugAndPlayDevicesW", Rollback});
}

TEST_CASE("A copy that hangs is given up when its time is over") {
    Machine m;
    SetUpModem(m, Mode(L"0"));
    m.CopyHangs(2);
    CheckRolledBack(m, RunProgram(L"-i"));
    CheckOrder(m.Journal(), {"PreInstall: Message 0x7E9", Rollback});
    CHECK(m.RunningThreads() == 1);
}

TEST_CASE("A staging that cannot make what its threads need is rolled back") {
    struct Refused {
        const char* Function;
        int Call;
    };
    for (const Refused& refused :
         {Refused{"CreateSemaphoreW", 1}, Refused{"CreateSemaphoreW", 2},
          Refused{"OpenSemaphoreW", 1}, Refused{"CreateThread", 1}, Refused{"CreateThread", 2}}) {
        Machine m;
        SetUpModem(m, Mode(L"0"));
        m.FailCall(refused.Function, refused.Call, ERROR_NOT_ENOUGH_MEMORY);
        CAPTURE(std::string(refused.Function));
        CheckRolledBack(m, RunProgram(L"-i"));
        CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
    }
}

TEST_CASE("Each step of the direct way that fails is rolled back") {
    struct Step {
        std::string Function;
        int Call;
        std::string Line;
    };
    const std::vector<Step> steps = {
        {"CM_Locate_DevNodeW", 1, "RefreshDeviceSet: Locate device root node fail"},
        {"CM_Reenumerate_DevNode", 1, "RefreshDeviceSet: Reenumerate device node fail"},
        // The cleanup asks twice before.
        {"SetupDiGetClassDevsW", 3, "AutoDeviceMatch: Get all present device fail"},
        {"LoadLibraryW", 1, "UpdateInstall: Load newdev.dll fail"},
        {"GetProcAddress", 1, "UpdateInstall: Get function UpdateDriverForPlugAndPlayDevices"},
    };
    for (const Step& step : steps) {
        Machine m;
        SetUpModem(m, Mode(L"1"));
        m.FailCall(step.Function, step.Call, ERROR_GEN_FAILURE);
        CAPTURE(step.Line);
        CheckRolledBack(m, RunProgram(L"-i"));
        CHECK(Position(m.Log(), step.Line) >= 0);
        CHECK(Position(m.Log(), step.Line) < Position(m.Log(), Rollback));
    }
}

TEST_CASE("Devices that never appear fail the direct way") {
    Machine m;
    SetUpModem(m, Mode(L"1"));
    m.Leave(PortFunction);
    m.Leave(NetFunction);
    CheckRolledBack(m, RunProgram(L"-i"));
    CHECK(Position(m.Log(), "AutoDeviceMatch: No device matched") >= 0);
}

TEST_CASE("A device that cannot be installed fails the direct way after its retries") {
    Machine m;
    SetUpModem(m, Mode(L"1"));
    m.AnswerInstall({.InfName = L"net.inf", .Error = ERROR_GEN_FAILURE});
    CheckRolledBack(m, RunProgram(L"-i"));
    CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW").size() == 3);
    CHECK(Position(m.Log(), "install failed! error code is : 0x0000001F") >= 0);
    // The function that was installed before is taken back with its INF.
    CHECK(m.Files(L"C:\\Windows") == WideTexts{L"C:\\Windows\\INF\\usb.inf"});
}

TEST_CASE("A device that cannot be switched fails the direct way before anything is matched") {
    Machine m;
    SetUpModem(m, Mode(L"1", L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSHIFTMODE=2\r\n"));
    CheckRolledBack(m, RunProgram(L"-i"));
    CHECK(Position(m.Log(), "ShiftDevice: No shift device configuration found") >= 0);
    CHECK(Position(m.Log(), "AutoDeviceMatch") == -1);
}

TEST_CASE("An install by either way and its uninstall leave the machine's files as before") {
    for (const wchar_t* mode : {L"0", L"1", L"2"}) {
        Machine m;
        SetUpModem(m, Mode(mode));
        const WideTexts before = m.Files(L"C:\\");
        CHECK(RunProgram(L"-i") == 1);
        m.LetThreadsFinish();
        CHECK(m.Files(L"C:\\") != before);
        CHECK(RunProgram(L"-u") == 1);
        CHECK(m.Files(L"C:\\") == before);
        // The look for devices at the end has found the modem again, without drivers.
        for (const std::wstring& id : {Parent, PortFunction, NetFunction}) {
            CHECK(m.HasDevice(id));
            CHECK_FALSE(m.At(id).Class.has_value());
        }
        CHECK(m.LeakSummary() == "");
    }
}

TEST_CASE("Two installs leave no INF in the store twice") {
    for (const wchar_t* mode : {L"0", L"1"}) {
        Machine m;
        SetUpModem(m, Mode(mode));
        CHECK(RunProgram(L"-i") == 1);
        const WideTexts once = m.Files(L"C:\\");
        CHECK(RunProgram(L"-i") == 1);
        CHECK(m.Files(L"C:\\") == once);
    }
}
