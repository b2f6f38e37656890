// Logs of failing runs, made in the lab, and what is said of them.
#include "explain/explain.h"
#include "explain/log_page.h"
#include "explain/with_packet.h"
#include "output/explain_json.h"
#include "output/explain_text.h"
#include "output/pages/explain_html.h"
#include "output/utf8.h"
#include "support/log_maker.h"
#include "support/scratch_folder.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>
#include <set>

using explain::Ending;
using explain::Explanation;
using explain::LogExplanation;

namespace {

struct Expected {
    std::string Log;
    Ending End;
    std::string Cause; // empty: none
    std::string Step;
    std::string Detail;
};

const std::vector<Expected> FailingRuns = {
    {"function-missing", Ending::Failure, "functions-missing", "Matching", "2 of 3 were there"},
    {"function-lost", Ending::Failure, "device-pulled", "Matching", ""},
    {"pulled", Ending::Failure, "device-pulled", "Matching", ""},
    {"not-plugged", Ending::Failure, "device-not-there", "Matching", ""},
    {"never-switches", Ending::Failure, "switched-and-nothing-came", "Matching", ""},
    {"drive-held", Ending::Failure, "drive-held", "Mode switch",
     "USBSTOR\\CdRom&Ven_Demo&Prod_Modem&Rev_0100, access denied"},
    {"no-drive-named", Ending::Failure, "switch-not-configured", "Mode switch", ""},
    {"copy-hangs", Ending::Failure, "staging-too-long", "Staging", ""},
    {"copy-without-time", Ending::Failure, "staging-without-time", "Staging", ""},
    {"copy-unsigned", Ending::Failure, "signature-refused", "Staging",
     "C:\\setup\\WIN7\\ompplain.inf, no catalog for OEM INF"},
    // The direct installation that followed it succeeded, and does not count.
    {"copy-denied-mode-2", Ending::Failure, "no-rights", "Staging",
     "C:\\setup\\WIN7\\ompmodem.inf, access denied"},
    {"folder-missing", Ending::Failure, "packet-folder-missing", "Cleanup",
     "C:\\setup\\WIN7\\, path not found"},
    {"not-an-inf", Ending::Failure, "inf-unreadable", "Cleanup",
     "C:\\setup\\WIN7\\ompnet.inf, file not found"},
    {"driver-missing", Ending::Failure, "file-of-packet-missing", "Direct installation",
     "USB\\VID_3A9D&PID_9001&MI_01, file not found"},
    {"wrong-switch", Ending::Failure, "wrong-switch", "Start", ""},
    {"process-ends", Ending::Stopped, "", "Cleanup", ""},
    {"killed-early", Ending::Stopped, "", "Cleanup", ""},
};

std::wstring LogPath(const std::string& name) {
    return DataPath(L"explain\\logs\\" + Wide(name) + L".log");
}

LogExplanation Explained(const std::wstring& path, bool all = false) {
    return explain::ExplainLog(path, all);
}

Explanation LastRun(const std::wstring& path) {
    const LogExplanation log = Explained(path);
    REQUIRE(log.Runs.size() == 1);
    return log.Runs.front();
}

Explanation LastRunOf(const std::string& bytes) {
    ScratchFolder folder(L"log");
    folder.Fill({{"Setup.log", bytes}});
    return LastRun(folder.Path() + L"\\Setup.log");
}

std::string CauseIn(const Explanation& run) {
    return run.Why ? run.Why->Name : std::string();
}

bool Contains(const std::vector<std::string>& texts, const std::string& part) {
    for (const std::string& text : texts) {
        if (text.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

} // namespace

TEST_CASE("The cause of each failing run is found, before the rollback and at its step") {
    std::set<std::string> causes;
    for (const Expected& expected : FailingRuns) {
        CAPTURE(expected.Log);
        const LogExplanation log = Explained(LogPath(expected.Log));
        CHECK(log.Facts.ForeignLines == 0);
        REQUIRE(log.Runs.size() == 1);
        const Explanation& run = log.Runs.front();
        CHECK(run.End == expected.End);
        CHECK(CauseIn(run) == expected.Cause);
        CHECK((run.Why ? run.Why->Detail : "") == expected.Detail);
        CHECK(run.Where.substr(0, run.Where.find_first_of(",;")) == expected.Step);
        causes.insert(expected.Cause);
    }
    CHECK(causes.size() >= 12);
}

TEST_CASE("Whatever line ends a run, the page names a cause for it") {
    for (const explain::KnownLine& line : explain::KnownLines()) {
        const std::string text = log_maker::Filled(line.Text);
        if (line.Means != explain::Effect::Ends || text.starts_with("Setup: Setup process")) {
            continue;
        }
        CAPTURE(text);
        log_maker::Log log;
        log.Line("Setup: Main thread started, thread id 0x00000100");
        log.Line("GetDriverDir: Get system WIN10\tbit 64");
        log.Line(text);
        log.Line("Setup: Setup process fail,begin rollback...");
        log.Line("Setup: Setup process fail,see more detail in log file");
        const Explanation run = LastRunOf(log.Bytes());
        REQUIRE(run.Why);
        CHECK(run.Why->Lines.size() == 1);
        CHECK(run.Why->Lines.front().Number == 3);
        // Composite set-up does not fail a run; what is said of it then is about the lines around.
        const bool mayBeUnnamed = line.Step == "Composite devices";
        CHECK((run.Why->Name != "cleanup-broke-off" || mayBeUnnamed));
    }
}

TEST_CASE("A failure below the composite set-up does not fail the run") {
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("pre CompositeDeviceSetup: Get composite device driver install - - -USB\\A - - -");
    log.Line("ChangeDeviceState: Change composite device state to 2 fail,error code 0x00000005");
    log.Line("RefreshDeviceSet: Reenumerate device node fail,error code 0x00000005");
    log.Line("Setup: Setup process fail,begin rollback...");
    log.Line("Setup: Setup process fail,see more detail in log file");
    const Explanation run = LastRunOf(log.Bytes());
    REQUIRE(run.Why);
    CHECK(CauseIn(run) == "windows-device-list");
    REQUIRE(run.Harmless.size() == 1);
    CHECK(run.Harmless.front().Number == 3);
}

TEST_CASE("Failures without a line are told from what stands around them") {
    log_maker::Log version;
    version.Line("Setup: Main thread started, thread id 0x00000100");
    version.Line("Setup: Setup process fail,see more detail in log file");
    CHECK(CauseIn(LastRunOf(version.Bytes())) == "version-box");

    log_maker::Log cleanup;
    cleanup.Line("Setup: Main thread started, thread id 0x00000100");
    cleanup.Line("GetDriverDir: Get system WIN10\tbit 64");
    cleanup.Line("Setup: Setup process fail,begin rollback...");
    cleanup.Line("Setup: Setup process fail,see more detail in log file");
    CHECK(CauseIn(LastRunOf(cleanup.Bytes())) == "cleanup-broke-off");

    log_maker::Log quit;
    quit.Line("Setup: Main thread started, thread id 0x00000100");
    quit.Line("PreInstall: Workitem thread started, thread id 0x00000104");
    quit.Line("Setup: Setup process fail,begin rollback...");
    quit.Line("Setup: Setup process fail,see more detail in log file");
    CHECK(CauseIn(LastRunOf(quit.Bytes())) == "staging-cut-short");
}

TEST_CASE("A success with fewer functions than the packet lists is doubtful") {
    const Explanation run = LastRun(LogPath("match-mode"));
    CHECK(run.End == Ending::Success);
    CHECK(Contains(run.Doubts, "content with 2 functions"));
    REQUIRE(run.Functions.size() == 2);
    CHECK(run.Functions[1].Device == "USB\\VID_3A9D&PID_9001&MI_01");
    CHECK(run.Functions[1].Inf == "ompserial.inf");
    CHECK(run.Functions[1].Result == "installed");

    const Explanation nothing = LastRun(LogPath("mode-7"));
    CHECK(Contains(nothing.Doubts, "none of 0, 1 and 2"));
}

TEST_CASE("With the packet at hand the missing function is named") {
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("GetDriverDir: Get system WIN10\tbit 64");
    log.Line("AutoDeviceMatch: 1 devices matched in match cycle 1,total 2 device");
    log.Line("AutoDeviceMatch: Max Cycle reached, device still not match complete,trying final "
             "chance");
    log.Line("Setup: Setup process fail,begin rollback...");
    log.Line("UnInstall: Removing device USB\\VID_1234&PID_5678&MI_00\\1&0000");
    log.Line("Setup: Setup process fail,see more detail in log file");
    Explanation failed = LastRunOf(log.Bytes());
    explain::AddFromPacket(failed, DataPath(L"packets\\good"));
    REQUIRE(failed.FromPacket.size() == 1);
    CHECK(failed.FromPacket[0] == "USB\\VID_1234&PID_5678&MI_01 (port.inf) was never seen");

    log_maker::Log half;
    half.Line("Setup: Main thread started, thread id 0x00000100");
    half.Line("GetDriverDir: Get system WIN10\tbit 64");
    half.Line("AutoDeviceMatch: Auto matching device...");
    half.Line("UpdateInstall: Device usb\\vid_1234&pid_5678&mi_01 successfully installed with inf "
              "C:\\p\\WIN10\\port.inf,reboot status is 0");
    half.Line("Setup: Setup process complete, total 9 seconds used");
    Explanation doubtful = LastRunOf(half.Bytes());
    CHECK(doubtful.Doubts.empty());
    explain::AddFromPacket(doubtful, DataPath(L"packets\\good"));
    REQUIRE(doubtful.FromPacket.size() == 1);
    CHECK(doubtful.FromPacket[0].starts_with("USB\\VID_1234&PID_5678&MI_00 (modem.inf) got no"));
    CHECK(doubtful.Doubts.size() == 1);
}

TEST_CASE("Each run of a log is told, and a whole one is without doubt") {
    const LogExplanation log = Explained(LogPath("whole"), true);
    REQUIRE(log.Runs.size() == 3);
    CHECK(log.Runs[0].Kind == "install");
    CHECK(log.Runs[1].Kind == "install");
    CHECK(log.Runs[2].Kind == "uninstall");
    for (const Explanation& run : log.Runs) {
        CAPTURE(run.Ordinal);
        CHECK(run.End == Ending::Success);
        CHECK(run.Doubts.empty());
        CHECK(run.Left.empty());
        CHECK(run.RunsInFile == 3);
    }
}

TEST_CASE("What stands behind the closing line does not change the verdict, and is shown") {
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("AutoDeviceMatch: Auto matching device...");
    log.Line("Setup: Setup process complete, total 9 seconds used");
    log.Line("CHookHelper: UnInstall hook fail, error code is 0x00000005");
    const Explanation run = LastRunOf(log.Bytes());
    CHECK(run.End == Ending::Success);
    CHECK(run.Harmless.empty());
    REQUIRE(run.AfterTheEnd.size() == 1);
    CHECK(run.AfterTheEnd.front().CodeMeaning.starts_with("access denied"));
}

TEST_CASE("Where staging and fallback both failed, the staging is the cause") {
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("PreInstall: Message 0x123 from thread 0x00000104");
    log.Line("AutoDeviceMatch: No device matched in 5 seconds");
    log.Line("Setup: Setup process fail,begin rollback...");
    log.Line("Setup: Setup process fail,see more detail in log file");
    CHECK(CauseIn(LastRunOf(log.Bytes())) == "staging-cut-short");
}

TEST_CASE("A code that belongs to an earlier call is not explained") {
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("RefreshDeviceSet: Reenumerate device node fail,error code 0x00000005");
    log.Line("ExecuteSingleRegeditReq: Register operation fail, req x error code 0x00000002");
    log.Line("ExecuteSingleRegeditReq: Register operation fail, req y error code 0x00000057");
    log.Line("Setup: Setup process fail,see more detail in log file");
    const Explanation run = LastRunOf(log.Bytes());
    REQUIRE(run.Why);
    CHECK(run.Why->Detail.empty());
    CHECK(run.Why->Lines.front().CodeMeaning.find("earlier call") != std::string::npos);
    REQUIRE(run.Harmless.size() == 1);
    CHECK(run.Harmless.front().More == 1);
}

TEST_CASE("What the rollback left is told") {
    CHECK(Contains(LastRun(LogPath("copy-hangs")).Left, "ompnet.inf was still being copied"));
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("PreInstallWorkItemThreadFun: Inf C:\\p\\a.inf was copied to inf C:\\i\\oem7.inf");
    log.Line("PreInstallWorkItemThreadFun: Inf C:\\p\\b.inf was copied to inf C:\\i\\oem8.inf");
    log.Line("PreInstall: Message 0x7EA from thread 0x00000104");
    log.Line("Setup: Setup process fail,begin rollback...");
    log.Line("UnInstall: Normal uninstall inf C:/I\\OEM8.INF OK");
    log.Line("RemoveFile: Error in deleting file : C:\\x.sys, error code 0x00000005");
    log.Line("Setup: Setup process fail,see more detail in log file");
    const Explanation run = LastRunOf(log.Bytes());
    REQUIRE(run.Left.size() == 2);
    CHECK(run.Left[0].find("x.sys") != std::string::npos);
    CHECK(run.Left[1].starts_with("oem7.inf, the copy of a.inf"));
}

TEST_CASE("Gaps and steps add up, and the page says what is waited for") {
    const Explanation run = LastRun(LogPath("function-missing"));
    REQUIRE(!run.Gaps.empty());
    CHECK(run.Gaps.front().Length >= 5000);
    CHECK(run.Gaps.front().WaitsFor == "the fixed five seconds");
    explain::Time sum = 0;
    for (const explain::StepTime& step : run.Steps) {
        sum += step.Length;
    }
    CHECK(sum == run.Lasted);
}

TEST_CASE("A log that stops tells what the run waited for, and how long it was silent") {
    std::string bytes = log_maker::ReadFile(LogPath("copy-hangs"));
    bytes.resize(bytes.find("PreInstall: Message"));
    bytes.resize(bytes.rfind('\n') + 1);
    const Explanation alone = LastRunOf(bytes);
    REQUIRE(alone.Stops);
    CHECK(alone.Stops->WaitsFor.starts_with("Windows copies the INF into its store"));
    CHECK(!alone.Stops->Silent);
    CHECK(!alone.Stops->MayHaveEndedItself);
    CHECK(alone.Verdict.find("in the step Staging") != std::string::npos);

    ScratchFolder folder(L"log");
    folder.Fill({{"Setup.log", bytes + "2026-11-22 15:06:12.000 0x00000200 Setup: Main thread "
                                       "started, thread id 0x00000200\n"}});
    const LogExplanation both = Explained(folder.Path() + L"\\Setup.log", true);
    REQUIRE(both.Runs.size() == 2);
    REQUIRE(both.Runs[0].Stops);
    REQUIRE(both.Runs[0].Stops->Silent);
    CHECK(*both.Runs[0].Stops->Silent / 1000 == 24 * 60 * 60 - 2);
    const std::string text = output::ExplanationText(both.Runs[0]);
    for (const explain::Possibility& one : explain::Possibilities()) {
        CHECK(text.find(one.What) != std::string::npos);
    }
    CHECK(LastRun(LogPath("process-ends")).Stops->MayHaveEndedItself);
}

TEST_CASE("A file cut anywhere is read, and a run without its beginning says so") {
    const std::string bytes = log_maker::ReadFile(LogPath("copy-denied-mode-2"));
    constexpr std::size_t Step = 97;
    for (std::size_t cut = Step; cut + 2 * Step < bytes.size(); cut += Step) {
        CAPTURE(cut);
        const Explanation head = LastRunOf(bytes.substr(0, cut));
        CHECK(head.End == Ending::Stopped);
        const Explanation tail = LastRunOf(bytes.substr(cut));
        CHECK(tail.End == Ending::Failure);
        CHECK(Contains(tail.Remarks, "begins in the middle"));
    }
}

TEST_CASE("Two runs that write at the same time are told apart by their threads") {
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100", 0x100);
    log.Line("Setup: Main thread started, thread id 0x00000200", 0x200);
    log.Line("ShiftDevice: No shift cmd configuration found", 0x100);
    log.Line("AutoDeviceMatch: No device matched in 5 seconds", 0x200);
    log.Line("Setup: Setup process fail,begin rollback...", 0x100);
    log.Line("Setup: Setup process fail,begin rollback...", 0x200);
    log.Line("Setup: Setup process fail,see more detail in log file", 0x100);
    log.Line("Setup: Setup process fail,see more detail in log file", 0x200);
    ScratchFolder folder(L"log");
    folder.Fill({{"Setup.log", log.Bytes()}});
    const LogExplanation both = Explained(folder.Path() + L"\\Setup.log", true);
    REQUIRE(both.Runs.size() == 2);
    CHECK(CauseIn(both.Runs[0]) == "switch-not-configured");
    CHECK(CauseIn(both.Runs[1]) == "device-not-there");
    CHECK(Contains(both.Runs[0].Remarks, "another run wrote"));
}

TEST_CASE("Another library's form of the same texts is understood") {
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("AutoDeviceMatch: No device matched in 5 seconds");
    log.Line("Setup: Setup process fail,see more detail in log file");
    std::string plain;
    std::string wide = "\xFF\xFE";
    for (const std::string& text : log.Texts()) {
        plain += "<7> installer | " + text + "\r\n";
        for (const char letter : "[2026-03-14 09:26:53] " + text + "\r\n") {
            wide += {letter, '\0'};
        }
    }
    const Explanation bare = LastRunOf(plain);
    CHECK(CauseIn(bare) == "device-not-there");
    CHECK(Contains(bare.Remarks, "no times"));
    const Explanation dated = LastRunOf(wide);
    CHECK(CauseIn(dated) == "device-not-there");
    CHECK(explain::TimeText(*dated.Began) == "2026-03-14 09:26:53");
}

TEST_CASE("A foreign file has no run") {
    ScratchFolder folder(L"log");
    std::string binary;
    for (int index = 0; index < 70'000; ++index) {
        binary += static_cast<char>(index * 7 % 251);
    }
    folder.Fill(
        {{"a.log", ">>>  [Device Install] \r\n     Section start 2026/03/14 09:26:53.589\r\n"},
         {"b.log", binary},
         {"c.log", ""}});
    for (const wchar_t* const name : {L"\\a.log", L"\\b.log", L"\\c.log"}) {
        CHECK(Explained(folder.Path() + name).Runs.empty());
    }
    CHECK_THROWS_AS(Explained(folder.Path() + L"\\none.log"), std::runtime_error);
}

TEST_CASE("A huge log is read a little at a time") {
    constexpr int Cycles = 60'000;
    log_maker::Log log;
    log.Line("Setup: Main thread started, thread id 0x00000100");
    log.Line("AutoDeviceMatch: Auto matching device...");
    for (int cycle = 1; cycle <= Cycles; ++cycle) {
        log.Line("AutoDeviceMatch: 2 devices matched in match cycle " + std::to_string(cycle) +
                 ",total 3 device");
    }
    const Explanation run = LastRunOf(log.Bytes());
    REQUIRE(run.Stops);
    CHECK(run.Stops->Last.Number == Cycles + 2);
    CHECK(run.Stops->WaitsFor.starts_with("functions that do not appear"));
    CHECK(run.Lines.size() < 50'000);
    CHECK(Contains(run.Remarks, "were left out"));
}

TEST_CASE("The page and the data hold what the text says") {
    const Explanation run = LastRun(LogPath("driver-missing"));
    const std::string page = output::ExplanationHtml({run});
    CHECK(page.find("<svg") != std::string::npos);
    CHECK(page.find("USB\\VID_3A9D&amp;PID_9001&amp;MI_01") != std::string::npos);
    CHECK(page.find("http") == std::string::npos);
    const auto data = nlohmann::json::parse(output::ExplanationJson({run}));
    CHECK(data.at("cause").at("name") == "file-of-packet-missing");
    CHECK(data.at("rolledBack") == true);
    CHECK(data.at("functions").size() == run.Functions.size());
    CHECK(data.at("where").get<std::string>().starts_with("Direct installation"));
}

TEST_CASE("A folder of logs is one line each and a count of causes") {
    std::vector<output::LogLine> logs;
    for (const char* const name : {"pulled", "function-lost", "whole"}) {
        logs.push_back({name, Explained(LogPath(name)).Runs, ""});
    }
    logs.push_back({"other", {}, "no line of Setup.exe in it"});
    const std::string text = output::SummaryText(logs);
    CHECK(text.find("4 logs") != std::string::npos);
    CHECK(text.find("     2  device-pulled\n") != std::string::npos);
    CHECK(text.find("     1  success\n") != std::string::npos);
    CHECK(text.find("     1  no line of Setup.exe in it\n") != std::string::npos);
}
