#include "support/torture.h"

#include "machine/guarded_memory.h"
#include "support/doctest_support.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <sys/stat.h>

using namespace machine;

namespace {

// The status of a process that found no entry where an INF must have one.
constexpr DWORD BadIndex = 0xC0000417;
constexpr std::int64_t CallBudget = 100'000;

const char* const Expressions[] = {
#include "generated/log_formats.inc"
};

// Far from what any run needs, near enough to end one that hangs.
void LimitRun(Machine& m, const Scenario& scenario) {
    m.SetStepBudget(CallBudget, std::chrono::hours(24));
    if (scenario.CountSettings) {
        m.CountSettingsToo();
    }
    {
        const UnguardedScope unguarded;
        scenario.Describe(m);
    }
    GuardSome();
}

struct Ending {
    // Nothing: the process was ended, or the run did not end by itself.
    std::optional<int> Result;
    // How a run that did not return ended; empty also for a process that ended as it may.
    std::string Problem;
};

bool AnyFailed(const Machine& m, const std::set<std::string>& functions) {
    const Lines& failed = m.FailedCalls();
    return std::any_of(failed.begin(), failed.end(), [&functions](const std::string& function) {
        return functions.contains(function);
    });
}

// A checked index may only be met where the INF parser gave less than the file has.
bool MayEndProcess(const Machine& m, DWORD status) {
    static const std::set<std::string> parsing{"SetupFindFirstLineW", "SetupFindNextLine",
                                               "SetupGetFieldCount", "SetupGetStringFieldW"};
    return status == BadIndex && AnyFailed(m, parsing);
}

// A file that goes with the process. Of NUL the C library asks with every character whether it is a
// console, which costs more than the run.
int Nowhere() {
    static const int file = [] {
        const std::unique_ptr<char, decltype(&std::free)> name(_tempnam(nullptr, "st"), &std::free);
        return _open(name.get(), _O_WRONLY | _O_CREAT | _O_TEMPORARY, _S_IREAD | _S_IWRITE);
    }();
    _lseek(file, 0, SEEK_SET);
    return file;
}

// While it lives, what the program writes to the standard output goes nowhere.
class Silence {
public:
    Silence() : kept_((std::fflush(stdout), _dup(1))) { _dup2(Nowhere(), 1); }
    ~Silence() {
        std::fflush(stdout);
        _dup2(kept_, 1);
        _close(kept_);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int kept_;
};

Ending RunToItsEnd(const Machine& m, const Scenario& scenario) {
    const Silence silence;
    try {
        return {scenario.Run(), {}};
    } catch (const ProcessEnded& ended) {
        return {std::nullopt, MayEndProcess(m, ended.Status) ? "" : "ended the process"};
    } catch (const StepBudgetExceeded& exceeded) {
        return {std::nullopt, "does not end, at " + exceeded.Call};
    } catch (const WaitNeverEnds& wait) {
        const bool allowed = AnyFailed(m, scenario.MayWaitForEver);
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

// How the machine is to misbehave, with its description for a message.
struct Misfortune {
    std::string Name;
    std::function<void(Machine&)> Befall;
};

// What is left to look at when the machine is gone.
struct Outcome {
    std::optional<int> Result;
    Lines Failed;
};

Outcome RunWith(const Scenario& scenario, const Misfortune& misfortune) {
    Machine m;
    LimitRun(m, scenario);
    misfortune.Befall(m);
    const Ending ending = RunToItsEnd(m, scenario);
    m.EndThreads();
    const UnguardedScope unguarded;
    INFO(scenario.Name, ", ", misfortune.Name, "; failed: ", m.FailedCalls());
    CHECK(ending.Problem == "");
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    CHECK(UnknownLine(m) == "");
    // One that a worker met with a bad index is its process's end, and was looked at above.
    CHECK((m.ThreadFailure() == "" || (!ending.Result && ending.Problem.empty())));
    if (ending.Result) {
        INFO("log: ", m.Log());
        scenario.Check(m, *ending.Result);
    }
    return {ending.Result, m.FailedCalls()};
}

int CountCalls(const Scenario& scenario) {
    Machine m;
    LimitRun(m, scenario);
    const Ending ending = RunToItsEnd(m, scenario);
    m.EndThreads();
    const UnguardedScope unguarded;
    INFO(scenario.Name, " unharmed, log: ", m.Log());
    CHECK(ending.Problem == "");
    REQUIRE(ending.Result);
    CHECK(*ending.Result == scenario.Result);
    CHECK(m.LeakSummary() == "");
    CHECK(UnknownLine(m) == "");
    scenario.Check(m, *ending.Result);
    return m.CountedCalls();
}

// Numbers that depend on the seed and on nothing else, on every system.
class Dice {
public:
    explicit Dice(unsigned seed) : random_(seed * 2654435761U + 1U) {}
    unsigned Below(unsigned end) {
        random_ ^= random_ << 13U;
        random_ ^= random_ >> 17U;
        random_ ^= random_ << 5U;
        return random_ % end;
    }

private:
    std::uint32_t random_;
};

// None that Windows also uses to say that a list is at its end.
const std::vector<DWORD>& SomeErrors() {
    static const std::vector<DWORD> errors{
        ERROR_ACCESS_DENIED,  ERROR_NO_SYSTEM_RESOURCES, ERROR_FILE_NOT_FOUND,
        ERROR_GEN_FAILURE,    ERROR_NOT_ENOUGH_MEMORY,   ERROR_INSUFFICIENT_BUFFER,
        ERROR_INVALID_HANDLE, ERROR_NO_SUCH_DEVINST,     ErrorAsBefore};
    return errors;
}

DWORD SomeError(Dice& dice) {
    return SomeErrors().at(dice.Below(static_cast<unsigned>(SomeErrors().size())));
}

// Two calls fail. A pair must not succeed where the first alone fails.
int FailTwo(const Scenario& scenario, unsigned seed, int calls) {
    Dice dice(seed);
    const auto end = static_cast<unsigned>(calls);
    const int first = 1 + static_cast<int>(dice.Below(end));
    // Later, so that until the first nothing changes.
    const int second = first + 1 + static_cast<int>(dice.Below(end));
    const DWORD error = SomeError(dice);
    const DWORD further = SomeError(dice);
    const std::string name = "seed " + std::to_string(seed) + ", call " + std::to_string(first);
    const Outcome one =
        RunWith(scenario, {name + " fails", [=](Machine& m) { m.FailAnyCall(first, error); }});
    const Outcome two =
        RunWith(scenario, {name + " and call " + std::to_string(second) + " fail", [=](Machine& m) {
                               m.FailAnyCall(second, further);
                               m.FailAnyCall(first, error);
                           }});
    const bool mended = one.Result && *one.Result == 0 && two.Result && *two.Result != 0;
    const bool mayBe = std::any_of(two.Failed.begin(), two.Failed.end(), [&](const auto& failed) {
        return scenario.MayMendAFailure.contains(failed);
    });
    INFO(scenario.Name, ", ", name, "; failed: ", two.Failed);
    CHECK((!mended || mayBe));
    return 2;
}

int FailMany(const Scenario& scenario, unsigned seed) {
    constexpr std::array<unsigned, 3> Rates{5, 30, 150};
    const unsigned rate = Rates.at(seed / 2 % Rates.size());
    RunWith(scenario, {"seed " + std::to_string(seed) + ", " + std::to_string(rate) +
                           " calls in a thousand fail",
                       [=](Machine& m) { m.FailCallsAtRandom(seed, rate, SomeErrors()); }});
    return 1;
}

// Says what was done, when it is over.
class Figures {
public:
    Figures(const Scenario& scenario, int calls)
        : name_(scenario.Name), calls_(calls), start_(std::chrono::steady_clock::now()) {}
    ~Figures() {
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start_;
        std::printf("%s: %d calls, %d failing runs, %.1f seconds\n", name_.c_str(), calls_, Runs,
                    seconds.count());
    }
    Figures(const Figures&) = delete;
    Figures& operator=(const Figures&) = delete;

    int Runs = 0;

private:
    std::string name_;
    int calls_;
    std::chrono::steady_clock::time_point start_;
};

} // namespace

bool IsKnownLogLine(const std::string& line) {
    static const std::vector<std::regex> formats(std::begin(Expressions), std::end(Expressions));
    // The same lines come again and again.
    static std::set<std::string> known;
    if (known.contains(line)) {
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

void FailEachCall(const Scenario& scenario, const std::vector<DWORD>& errors, int every) {
    const int calls = CountCalls(scenario);
    const int step = IsCampaign() ? 1 : every;
    Figures figures(scenario, calls);
    int first = 0;
    for (const DWORD error : errors) {
        first = first % step + 1;
        for (int call = first; call <= calls; call += step) {
            const std::string name =
                "call " + std::to_string(call) + " fails with " + std::to_string(error);
            const Outcome outcome =
                RunWith(scenario, {name, [=](Machine& m) { m.FailAnyCall(call, error); }});
            CHECK(outcome.Failed.size() == 1);
            ++figures.Runs;
        }
    }
}

void FailAtRandom(const Scenario& scenario, const Seeds& seeds) {
    const int calls = CountCalls(scenario);
    Figures figures(scenario, calls);
    for (unsigned seed = seeds.First; seed < seeds.First + seeds.Count; ++seed) {
        figures.Runs += seed % 2 == 0 ? FailTwo(scenario, seed, calls) : FailMany(scenario, seed);
    }
}

void FailInAnyOrder(const Scenario& scenario, const Seeds& seeds) {
    const int calls = CountCalls(scenario);
    Figures figures(scenario, calls);
    for (unsigned seed = seeds.First; seed < seeds.First + seeds.Count; ++seed) {
        Dice dice(seed);
        const int call = 1 + static_cast<int>(dice.Below(static_cast<unsigned>(calls)));
        const DWORD error = SomeError(dice);
        const std::string name = "threads in order " + std::to_string(seed) + ", call " +
                                 std::to_string(call) + " fails";
        RunWith(scenario, {name, [=](Machine& m) {
                               m.ShuffleThreads(seed);
                               m.FailAnyCall(call, error);
                           }});
        ++figures.Runs;
    }
}
