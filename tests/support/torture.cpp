#include "support/torture.h"

#include "support/doctest_support.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <regex>
#include <set>

using namespace machine;

namespace {

// The status of a process that found no entry where an INF must have one.
constexpr DWORD BadIndex = 0xC0000417;
constexpr std::int64_t CallBudget = 100'000;

const char* const Expressions[] = {
#include "generated/log_formats.inc"
};

// Far from what any run needs, near enough to end one that hangs.
void LimitRun(Machine& m, const Road& road) {
    m.SetStepBudget(CallBudget, std::chrono::hours(24));
    if (road.CountSettings) {
        m.CountSettingsToo();
    }
    road.Describe(m);
}

struct Ending {
    // Nothing: the process was ended, or the run did not end by itself.
    std::optional<int> Result;
    // How a run that did not return ended; empty also for a process that ended as it may.
    std::string Problem;
};

// A checked index may only be met where the INF parser gave less than the file has.
bool MayEndProcess(const Machine& m, DWORD status) {
    static const std::set<std::string> parsing{"SetupGetFieldCount", "SetupGetStringFieldW"};
    return status == BadIndex && parsing.count(m.FailedCall()) != 0;
}

Ending RunToItsEnd(const Machine& m, const Road& road) {
    try {
        return {road.Run(), {}};
    } catch (const ProcessEnded& ended) {
        return {std::nullopt, MayEndProcess(m, ended.Status) ? "" : "ended the process"};
    } catch (const StepBudgetExceeded& exceeded) {
        return {std::nullopt, "does not end, at " + exceeded.Call};
    } catch (const WaitNeverEnds& wait) {
        const bool allowed = road.MayWaitForEver.count(m.FailedCall()) != 0;
        return {std::nullopt, allowed ? "" : "waits for ever in " + wait.Call};
    } catch (const std::exception& exception) {
        return {std::nullopt, std::string("throws ") + exception.what()};
    }
}

std::string UnknownLine(const Machine& m) {
    const Lines log = m.Log();
    const auto unknown = std::find_if_not(log.begin(), log.end(), IsKnownLogLine);
    return unknown == log.end() ? std::string() : *unknown;
}

void RunFailing(const Road& road, int call, DWORD error) {
    Machine m;
    LimitRun(m, road);
    m.FailAnyCall(call, error);
    const Ending ending = RunToItsEnd(m, road);
    m.EndThreads();
    INFO("road ", road.Name, ", call ", call, " ", m.FailedCall(), " fails with ", error);
    CHECK(ending.Problem == "");
    CHECK(m.FailedCall() != "");
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    CHECK(UnknownLine(m) == "");
    CHECK(m.ThreadFailure() == "");
    if (ending.Result) {
        INFO("log: ", m.Log());
        road.Check(m, *ending.Result);
    }
}

int CountCalls(const Road& road) {
    Machine m;
    LimitRun(m, road);
    const Ending ending = RunToItsEnd(m, road);
    m.EndThreads();
    INFO("road ", road.Name, " unharmed, log: ", m.Log());
    CHECK(ending.Problem == "");
    REQUIRE(ending.Result);
    CHECK(*ending.Result == road.Result);
    CHECK(m.LeakSummary() == "");
    CHECK(UnknownLine(m) == "");
    road.Check(m, *ending.Result);
    return m.CountedCalls();
}

} // namespace

bool IsKnownLogLine(const std::string& line) {
    static const std::vector<std::regex> formats(std::begin(Expressions), std::end(Expressions));
    // The same lines come again and again.
    static std::set<std::string> known;
    if (known.count(line) != 0) {
        return true;
    }
    const bool matches = std::any_of(formats.begin(), formats.end(), [&line](const auto& format) {
        return std::regex_match(line, format);
    });
    if (matches) {
        known.insert(line);
    }
    return matches;
}

std::string FailureLine(const Lines& log, const std::vector<std::string>& harmless) {
    const auto line = std::find_if(log.begin(), log.end(), [&harmless](const std::string& text) {
        const bool ignored =
            std::any_of(harmless.begin(), harmless.end(),
                        [&text](const auto& start) { return text.starts_with(start); });
        return !ignored && text.find(" fail") != std::string::npos;
    });
    return line == log.end() ? std::string() : *line;
}

void FailEachCall(const Road& road, const std::vector<DWORD>& errors) {
    const auto start = std::chrono::steady_clock::now();
    const int calls = CountCalls(road);
    int runs = 0;
    for (const DWORD error : errors) {
        for (int call = 1; call <= calls; ++call) {
            RunFailing(road, call, error);
            ++runs;
        }
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s: %d calls, %d failing runs, %.1f seconds\n", road.Name.c_str(), calls, runs,
                seconds.count());
}
