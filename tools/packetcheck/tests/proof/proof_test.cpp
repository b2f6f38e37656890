// The plan is what the run does: packets and settings at random, each planned by the shipped tool
// and run by the program on the simulated machine.
//
// PACKETCHECK_PACKETS: how many, PACKETCHECK_SEED: the first seed. A failure names its seed.
#include "proof/lab_packet.h"
#include "proof/scene.h"
#include "proof/told.h"
#include "setup/run_program.h"
#include "support/doctest_support.h"
#include "support/program_state.h"

#include <cstdlib>

using namespace proof;
using machine::Machine;

namespace {

std::uint32_t NumberFrom(const char* variable, std::uint32_t otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise
                           : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

enum class End { Success, Failure, ProcessEnds, Endless };

struct RunOf {
    End Ending = End::Success;
    Lines Log;
};

RunOf RunIt(Machine& m, const wchar_t* commandLine) {
    constexpr std::int64_t EnoughCalls = 2'000'000;
    ResetProgramState();
    m.ForgetJournal();
    m.SetStepBudget(EnoughCalls, std::chrono::hours(1));
    RunOf run;
    try {
        run.Ending = machine::RunProgram(commandLine) == 1 ? End::Success : End::Failure;
        m.LetThreadsFinish();
    } catch (const machine::ProcessEnded&) {
        run.Ending = End::ProcessEnds;
    } catch (const machine::StepBudgetExceeded&) {
        run.Ending = End::Endless;
    }
    run.Log = m.Log();
    m.EndThreads();
    return run;
}

// The runs of one packet.
struct Played {
    std::uint32_t Seed = 0;
    RunOf Install;   // as the plan assumes
    RunOf Uninstall; // after it
    RunOf AtRandom;  // with other devices
    RunOf Refused;   // every operation of a script fails
};

void RefuseScripts(Machine& m) {
    for (const char* function : {"RegCreateKeyExW", "RegOpenKeyExW", "CreateDirectoryW",
                                 "CreateFileW", "DeleteFileW", "CopyFileW"}) {
        m.FailCallsFrom(function, 1, ERROR_ACCESS_DENIED);
    }
}

std::map<std::wstring, std::string> FilesOf(const Machine& m, const std::wstring& folder) {
    std::map<std::wstring, std::string> files;
    for (const std::wstring& path : m.Files(folder)) {
        files[path.substr(folder.size())] = m.ReadBytes(path);
    }
    return files;
}

// All on one machine: making one takes longer than a run.
Played Play(const RandomPacket& packet, std::uint32_t seed, PacketFolder& folder) {
    Machine m;
    PutPacket(m, packet);
    folder.Keep(FilesOf(m, L"D:\\Packet\\"));
    Played played;
    played.Seed = seed;
    SetUpAsPlanned(m);
    played.Install = RunIt(m, L"-i");
    SetUpAsPlanned(m);
    played.Uninstall = RunIt(m, L"-u");
    Dice dice(seed);
    SetUpAtRandom(m, dice);
    played.AtRandom = RunIt(m, L"-i");
    RefuseScripts(m);
    SetUpAsPlanned(m);
    played.Refused = RunIt(m, L"-i");
    return played;
}

const char* NameOf(End ending) {
    switch (ending) {
    case End::Success:
        return "success";
    case End::Failure:
        return "failure";
    case End::ProcessEnds:
        return "process ends";
    default:
        return "endless";
    }
}

// Everything that the run says, in order, is what the rehearsal says.
void CheckLog(const RunOf& run, const Json& plan) {
    CHECK(plan.at("outcome") == NameOf(run.Ending));
    if (run.Ending != End::Endless) {
        CHECK(Difference(Comparable(TextsOf(plan.at("log"))),
                         Comparable(BeforeRollback(run.Log))) == "");
    }
}

void CheckRollback(const RunOf& run, const Json& plan) {
    const Lines rollback = OfRollback(run.Log);
    if (!rollback.empty()) {
        Lines expected = Comparable(TextsOf(plan.at("rollback").at("log")));
        expected.insert(expected.begin(), rollback.front());
        CHECK(Difference(expected, Comparable(rollback)) == "");
    }
}

std::string Unpath(const std::string& path) {
    return path.substr(path.rfind('\\') + 1);
}

// Whatever devices there are: the order of the INF files is the plan's.
void CheckInfOrder(const Lines& log, const Json& plan) {
    Lines order;
    for (const std::string& path : Between(log, "UpdateInstall: Inf ", " priority is")) {
        order.push_back(Unpath(path));
    }
    if (!order.empty()) {
        CHECK(order == TextsOf(plan.at("infs"), "name"));
    }
    Lines staged;
    for (const std::string& path : Between(log, "PreInstall: Inf to copy ", "")) {
        staged.push_back(Unpath(path));
    }
    if (!staged.empty()) {
        CHECK(staged == TextsOf(plan.at("staging")));
    }
}

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

// The INF that the plan has for a device.
std::string PlannedInf(const Json& plan, const std::string& id) {
    for (const Json& pair : plan.at("pairs")) {
        if (Upper(pair.at("id")) == Upper(id)) {
            return pair.at("inf");
        }
    }
    return {};
}

void CheckPairs(const Lines& log, const Json& plan) {
    for (const std::string& done : Between(log, "UpdateInstall: Device ", ",reboot status is")) {
        const std::string mark = " successfully installed with inf ";
        const std::size_t at = done.find(mark);
        CHECK(PlannedInf(plan, done.substr(0, at)) == Unpath(done.substr(at + mark.size())));
    }
}

// The number that the matching waits for is the plan's number for the device that it found first.
void CheckCounts(const Lines& log, const Json& plan) {
    const Lines matched = Between(log, "UpdateInstall: Matched device ", "");
    const Lines finished =
        Between(log, "AutoDeviceMatch: Auto device match finish,total ", " devices matched");
    if (matched.empty() || finished.empty()) {
        return;
    }
    std::string base = Upper(matched.front());
    base = base.find("&MI_") == std::string::npos ? base : base.substr(0, base.rfind('&'));
    const Lines modes = Between(log, "AutoDeviceMatch: User set match mode to ", "");
    for (const Json& expected : plan.at("expected")) {
        if (expected.at("device") == base) {
            const std::string number = std::to_string(expected.at("functions").get<int>());
            CHECK((finished.front() == number || finished.front() == modes.front()));
        }
    }
}

void CheckFiles(const Lines& log, const Json& run) {
    Lines planned;
    for (const std::string& path : TextsOf(run.at("removes").at("files"))) {
        if (!Upper(Unpath(path)).starts_with("OEM")) {
            planned.push_back(path);
        }
    }
    CHECK(Difference(planned, WantedGone(log)) == "");
}

Lines Reported(const Lines& log) {
    Lines lines;
    for (const std::string& line : log) {
        if (line.starts_with("Execut")) {
            lines.push_back(line.substr(0, line.rfind("error code")));
        }
    }
    return lines;
}

// A machine on which every operation fails reports each line as it was filled. (A mode switch fails
// there as well, so such a run may end earlier than planned.)
void CheckFilledLines(const Lines& log, const Json& plan) {
    const Lines reported = Reported(BeforeRollback(log));
    Lines planned = FilledLines(plan);
    REQUIRE(reported.size() <= planned.size());
    planned.resize(reported.size());
    CHECK(Difference(planned, reported) == "");
}

void Compare(const Played& played, const Json& install) {
    INFO("seed ", played.Seed);
    const Json& uninstall = install.at("uninstall");
    CheckLog(played.Install, install);
    CheckRollback(played.Install, install);
    CheckLog(played.Uninstall, uninstall);
    const Lines log = BeforeRollback(played.Install.Log);
    CheckFiles(log, install);
    CheckFiles(played.Uninstall.Log, uninstall);
    CheckFilledLines(played.Refused.Log, install);
    for (const RunOf* run : {&played.Install, &played.AtRandom}) {
        CheckInfOrder(run->Log, install);
        CheckPairs(run->Log, install);
        CheckCounts(run->Log, install);
    }
}

void Replace(std::wstring& text, std::wstring_view from, std::wstring_view to) {
    const std::size_t at = text.find(from);
    REQUIRE(at != std::wstring::npos);
    text.replace(at, from.size(), to);
}

void CompareSeeds(std::uint32_t first, std::uint32_t count) {
    PacketFolder folder;
    std::vector<Played> played;
    for (std::uint32_t seed = first; seed < first + count; ++seed) {
        played.push_back(Play(MakePacket(seed), seed, folder));
    }
    const std::vector<Json> installs = folder.Plans(L"-i");
    REQUIRE(installs.size() == count);
    for (std::uint32_t index = 0; index < count; ++index) {
        Compare(played[index], installs[index]);
    }
}

} // namespace

TEST_CASE("The plans of random packets are what their runs do") {
    constexpr std::uint32_t Together = 100;
    const std::uint32_t first = NumberFrom("PACKETCHECK_SEED", 1);
    const std::uint32_t count = NumberFrom("PACKETCHECK_PACKETS", 30);
    for (std::uint32_t done = 0; done < count; done += Together) {
        CompareSeeds(first + done, std::min(Together, count - done));
    }
}

TEST_CASE("The plan of the lab's packet, with each MODE, is what its runs do") {
    PacketFolder folder;
    std::vector<Played> played;
    for (const wchar_t* const mode : {L"MODE=0", L"MODE=1", L"MODE=2"}) {
        RandomPacket packet = LabPacket();
        Replace(packet.Ini, L"MODE=1", mode);
        played.push_back(Play(packet, static_cast<std::uint32_t>(played.size()), folder));
    }
    const std::vector<Json> installs = folder.Plans(L"-i");
    REQUIRE(installs.size() == played.size());
    for (std::size_t index = 0; index < played.size(); ++index) {
        CHECK(installs[index].at("infs").size() == 4);
        CHECK(installs[index].at("outcome") == "success");
        Compare(played[index], installs[index]);
    }
}

TEST_CASE("The plan of an uninstall is the one that the plan of an install ends with") {
    PacketFolder folder;
    const std::uint32_t seed = NumberFrom("PACKETCHECK_SEED", 1);
    Play(MakePacket(seed), seed, folder);
    const Json install = folder.Plans(L"-i").front();
    const Json uninstall = folder.Plans(L"-u").front();
    CHECK(uninstall.at("run") == "uninstall");
    for (const auto& [field, value] : install.at("uninstall").items()) {
        CHECK(uninstall.at(field) == value);
    }
}
