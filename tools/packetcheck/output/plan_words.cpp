#include "output/plan_words.h"

#include "output/utf8.h"

namespace output {

namespace {

std::uint64_t WaitSeconds(const plan::Run& run) {
    std::uint64_t milliseconds = 0;
    for (const plan::Wait& wait : run.Waits) {
        milliseconds += wait.Milliseconds;
    }
    return milliseconds / 1000;
}

} // namespace

std::string OutcomeWord(const plan::Run& run) {
    switch (run.End) {
    case plan::Outcome::Success:
        return "succeeds";
    case plan::Outcome::Failure:
        return "fails";
    case plan::Outcome::ProcessEnds:
        return "ends the process on the spot";
    default:
        return "goes on for ever";
    }
}

std::string OutcomeReason(const plan::Run& run) {
    if (run.End == plan::Outcome::Success) {
        return {};
    }
    const std::string reason = Utf8(run.Reason);
    return run.End == plan::Outcome::ProcessEnds ? " (status 0xC0000417); last line: " + reason
                                                 : ": " + reason;
}

std::string CommandOf(const plan::Plan& plan) {
    return plan.IsInstall ? "Setup.exe -i" : "Setup.exe -u";
}

std::string SecondsText(std::uint64_t seconds) {
    constexpr std::uint64_t Minute = 60;
    constexpr std::uint64_t Hour = 3600;
    if (seconds < 2 * Minute) {
        return std::to_string(seconds) + " s";
    }
    return seconds < 2 * Hour ? std::to_string(seconds / Minute) + " min " +
                                    std::to_string(seconds % Minute) + " s"
                              : std::to_string(seconds / Hour) + " h " +
                                    std::to_string(seconds % Hour / Minute) + " min";
}

std::string WaitsText(const plan::Plan& plan) {
    const std::string worst = plan.WorstCaseSeconds
                                  ? "at worst " + SecondsText(*plan.WorstCaseSeconds)
                                  : std::string("nothing bounds it when a function is missing "
                                                "(MAXCYCLE)");
    return "It waits " + SecondsText(WaitSeconds(plan.Main)) + "; " + worst +
           ", without the time that Windows itself takes";
}

std::string ClassText(const plan::Inf& inf) {
    if (!inf.Readable) {
        return "cannot be read: last";
    }
    const std::string rank = std::to_string(inf.Rank);
    return inf.ClassName.empty() ? "no class: place " + rank
                                 : "class " + Utf8(inf.ClassName) + ": place " + rank;
}

std::string CountWarning(const plan::Expected& expected) {
    return expected.Possible >= expected.Functions
               ? std::string()
               : "only " + std::to_string(expected.Possible) + " can ever arrive";
}

} // namespace output
