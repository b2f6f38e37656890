// What a run did, as plain data.
#pragma once

#include "explain/runs.h"

namespace explain {

enum class Ending { Success, Failure, Stopped };

// A line of the log with what the page says of it.
struct ToldLine {
    std::size_t Number = 0;
    std::optional<Time> When;
    std::string Text;
    std::string Meaning;
    std::string CodeMeaning; // empty: the line has no code, or it says nothing
    Effect Means = Effect::Info;
    std::size_t More = 0; // lines of this kind that follow
};

struct Cause {
    std::string Name; // "functions-missing"
    std::string Happened;
    std::string Detail; // what this log adds: "2 of 3 functions were there"
    std::string Mend;
    std::string Ask;
    std::vector<ToldLine> Lines; // the line that tells it, with what explains it above
};

// One function of the device: the INF that it was offered, and what came of it.
struct FunctionResult {
    std::string Device;
    std::string Inf;
    std::string Result;
    bool IsGood = false;
};

// A stretch of time without a line.
struct Gap {
    std::size_t After = 0; // the file's line in front of it
    Time Begin = 0;
    Time Length = 0;
    std::string Text;     // the line in front of it
    std::string WaitsFor; // empty when the page names no wait
    std::uint32_t Thread = 0;
};

// A part of the run; one that is come back to has several.
struct StepTime {
    std::string Name;
    bool InRollback = false;
    std::size_t FirstLine = 0;
    Time Begin = 0;
    Time Length = 0;
};

// A log that stops.
struct Stop {
    ToldLine Last;
    std::string WaitsFor;
    std::string Mend;
    // Until the next run of the file began; nothing when none did.
    std::optional<Time> Silent;
    bool MayHaveEndedItself = false; // the last line is of the cleanup
};

struct Explanation {
    std::string File;
    std::size_t Ordinal = 1;
    std::size_t RunsInFile = 1;
    std::size_t FirstLine = 0;
    std::size_t LastLine = 0;
    std::optional<Time> Began;
    Time Lasted = 0;
    std::string Generation; // "WIN10"; empty when the log does not say
    std::string Kind;       // "install", "uninstall", "run"
    Ending End = Ending::Success;
    bool RolledBack = false;
    std::string Verdict;
    std::optional<Cause> Why;
    std::string Where;
    std::vector<ToldLine> Harmless;
    std::vector<FunctionResult> Functions;
    std::vector<Gap> Gaps;
    std::vector<StepTime> Steps;
    std::vector<ToldLine> AfterTheEnd;
    std::vector<std::string> Doubts;
    std::vector<std::string> Left; // by the rollback or the uninstall
    std::vector<std::string> FromPacket;
    std::vector<std::string> Remarks; // about the log itself
    std::optional<Stop> Stops;
    // For the picture.
    Entries Lines;
    std::uint32_t MainThread = 0;
};

// Seconds as a person says them: "0.4 s", "12 s", "3 min 5 s".
std::string DurationText(Time milliseconds);

} // namespace explain
