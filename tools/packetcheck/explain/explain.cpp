#include "explain/explain.h"

#include "explain/find_cause.h"
#include "explain/results.h"
#include "explain/story.h"

#include "output/utf8.h"

#include <algorithm>

namespace explain {

namespace {

std::string Plural(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string Achieved(const View& view, const std::vector<FunctionResult>& functions) {
    if (view.IsUninstall()) {
        const Part main = view.Main();
        const auto removed = std::count_if(main.begin(), main.end(), [](const Entry& entry) {
            return entry.Is("UnInstall: Removing device");
        });
        return Plural(static_cast<std::size_t>(removed), "device") + " removed";
    }
    std::size_t staged = 0;
    std::size_t installed = 0;
    for (const FunctionResult& row : functions) {
        staged += row.IsGood && row.Device.empty() ? 1U : 0U;
        installed += row.IsGood && !row.Device.empty() ? 1U : 0U;
    }
    if (installed != 0) {
        return Plural(installed, "function") + " of the device got a driver";
    }
    return staged == 0 ? std::string("no driver was installed")
                       : Plural(staged, "INF file") +
                             " staged; Windows installs the drivers when the device is plugged";
}

std::string KindOf(const View& view) {
    return view.IsInstall() ? "install" : view.IsUninstall() ? "uninstall" : "run";
}

std::string StoppedVerdict(const Explanation& result) {
    const std::string place = result.Where.substr(0, result.Where.find_first_of(",;"));
    return "The log of the " + result.Kind + " stops after " + DurationText(result.Lasted) +
           (place.empty() ? "" : ", in the step " + place) +
           ": it says neither success nor failure";
}

std::string VerdictOf(const View& view, const Explanation& result) {
    const std::string subject = "The " + result.Kind;
    const std::string after = " after " + DurationText(result.Lasted);
    switch (result.End) {
    case Ending::Success:
        return subject + " succeeded" + after + ": " + Achieved(view, result.Functions) +
               (result.Doubts.empty() ? "" : ". There is reason for doubt");
    case Ending::Failure:
        return subject + " failed" + after + (result.RolledBack ? " and was rolled back" : "") +
               (result.Why ? ": " + result.Why->Happened : "") +
               (result.Why && !result.Why->Detail.empty() ? " (" + result.Why->Detail + ")" : "");
    default:
        return StoppedVerdict(result);
    }
}

std::string GenerationIn(const Run& run) {
    for (const Entry& entry : run.Lines) {
        if (entry.Is("GetDriverDir: Get system") && !entry.Values.empty()) {
            return entry.Values.front();
        }
    }
    return {};
}

void AddTimes(const Run& run, Explanation& result) {
    std::optional<Time> last;
    for (const Entry& entry : run.Lines) {
        if (entry.When) {
            result.Began = result.Began ? result.Began : entry.When;
            last = entry.When;
        }
    }
    result.Lasted = last ? std::max(Time{0}, *last - *result.Began) : 0;
}

void AddRemarks(const Run& run, Explanation& result) {
    if (!run.HasBeginning) {
        result.Remarks.emplace_back("the file begins in the middle of this run; its first lines "
                                    "may be in Setup.old.log");
    }
    if (run.IsMixed) {
        result.Remarks.emplace_back("another run wrote at the same time: two setups at once "
                                    "disturb each other");
    }
    if (run.Skipped != 0) {
        result.Remarks.push_back(std::to_string(run.Skipped) +
                                 " lines in the middle of this run were left out");
    }
    if (!result.Began) {
        result.Remarks.emplace_back("the lines have no times, so nothing is said about durations");
    }
}

// These lines may stand behind the closing line of every run.
void AddAfterEnd(const View& view, Explanation& result) {
    for (const Entry& entry : view.AfterEnd()) {
        result.AfterTheEnd.push_back(Tell(entry));
    }
}

std::string WhereItEnded(const View& view, const Explanation& result) {
    if (result.End == Ending::Success || view.Main().empty()) {
        return {};
    }
    const std::size_t line = result.Why && !result.Why->Lines.empty()
                                 ? result.Why->Lines.back().Number
                                 : view.Main().back().Number;
    return PlaceOf(view, result.Steps, line);
}

} // namespace

Explanation ExplainRun(const Run& run, const std::string& file) {
    const View view(run);
    Explanation result;
    result.File = file;
    result.Ordinal = run.Ordinal;
    result.FirstLine = run.Lines.front().Number;
    result.LastLine = run.Lines.back().Number;
    result.MainThread = run.MainThread;
    result.Generation = GenerationIn(run);
    result.Kind = KindOf(view);
    result.End = view.End();
    result.RolledBack = view.IsRolledBack();
    AddTimes(run, result);
    result.Why = FindCause(view);
    result.Steps = StepsOf(view);
    result.Where = WhereItEnded(view, result);
    result.Harmless = HarmlessLines(view, result.Why);
    result.Functions = FunctionsOf(view);
    result.Gaps = GapsOf(view);
    result.Doubts = DoubtsOf(view);
    result.Left = LeftBehind(view);
    result.Stops = StopOf(view);
    AddAfterEnd(view, result);
    AddRemarks(run, result);
    result.Verdict = VerdictOf(view, result);
    result.Lines = run.Lines;
    return result;
}

LogExplanation ExplainLog(const std::wstring& path, bool all) {
    LogExplanation result;
    const std::string file = Utf8(path.substr(path.find_last_of(L"\\/") + 1));
    Run latest;
    result.Facts = ReadRuns(path, [&](Run& run) {
        if (all) {
            result.Runs.push_back(ExplainRun(run, file));
            // The picture is of one run.
            result.Runs.back().Lines.clear();
        }
        if (latest.Lines.empty() || run.Ordinal > latest.Ordinal) {
            latest = std::move(run);
        }
    });
    if (!all && !latest.Lines.empty()) {
        result.Runs.push_back(ExplainRun(latest, file));
    }
    for (Explanation& run : result.Runs) {
        run.RunsInFile = result.Facts.Runs;
    }
    return result;
}

} // namespace explain
