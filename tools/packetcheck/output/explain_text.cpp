#include "output/explain_text.h"

#include "explain/log_page.h"
#include "output/terminal.h"

#include <algorithm>
#include <map>

namespace output {

namespace {

using explain::DurationText;
using explain::Ending;
using explain::Explanation;
using explain::ToldLine;
using terminal::Colour;
using terminal::In;

constexpr std::size_t Width = 100;

// Words broken to the width, each line behind `indent` blanks; the first line's blanks are there.
std::string Wrapped(const std::string& text, std::size_t indent) {
    std::string result;
    std::size_t column = indent;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        const std::size_t length = end - at;
        if (column != indent && column + 1 + length > Width) {
            result += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (column != indent) {
            result += ' ';
            ++column;
        }
        result += text.substr(at, length);
        column += length;
        at = end + 1;
    }
    return result + "\n";
}

std::string Row(const std::string& name, const std::string& text) {
    constexpr std::size_t Column = 13;
    if (text.empty()) {
        return {};
    }
    std::string head = name;
    head.resize(std::max(Column, name.size() + 1), ' ');
    return In(Colour::Cyan, head) + Wrapped(text, Column);
}

std::string Heading(const std::string& text) {
    return "\n" + In(Colour::Bold, text) + "\n";
}

std::string OneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::replace(text.begin(), text.end(), '\t', ' ');
    return text;
}

std::string LineText(const ToldLine& line) {
    std::string text = "  line " + std::to_string(line.Number) + ": " + OneLine(line.Text) + "\n";
    const std::string more =
        line.More == 0 ? "" : "and " + std::to_string(line.More) + " more lines of this kind";
    for (const std::string& said : {line.Meaning, line.CodeMeaning, more}) {
        text += said.empty() ? "" : "      " + Wrapped(said, 6);
    }
    return text;
}

std::string LinesText(const std::string& heading, const std::vector<ToldLine>& lines) {
    std::string text = lines.empty() ? "" : Heading(heading);
    for (const ToldLine& line : lines) {
        text += LineText(line);
    }
    return text;
}

std::string ListText(const std::string& heading, const std::vector<std::string>& list) {
    std::string text = list.empty() ? "" : Heading(heading);
    for (const std::string& entry : list) {
        text += "  " + Wrapped(OneLine(entry), 4);
    }
    return text;
}

Colour ColourOf(const Explanation& run) {
    switch (run.End) {
    case Ending::Success:
        return run.Doubts.empty() ? Colour::Green : Colour::Yellow;
    case Ending::Failure:
        return Colour::Red;
    default:
        return Colour::Yellow;
    }
}

std::string HeadText(const Explanation& run) {
    std::string text = run.File + ": run " + std::to_string(run.Ordinal) + " of " +
                       std::to_string(run.RunsInFile) + ", lines " + std::to_string(run.FirstLine) +
                       " to " + std::to_string(run.LastLine);
    if (run.Began) {
        text += ", " + explain::TimeText(*run.Began);
    }
    return text + (run.Generation.empty() ? "" : ", " + run.Generation) + "\n\n" +
           In(ColourOf(run), run.Verdict + ".") + "\n\n";
}

std::string Detail(const explain::Cause& cause) {
    return cause.Detail.empty() ? std::string() : ": " + cause.Detail;
}

std::string CauseText(const Explanation& run) {
    std::string text;
    if (run.Why) {
        text += Row("Cause", run.Why->Happened + Detail(*run.Why) + " [" + run.Why->Name + "]");
        text += Row("Where", run.Where);
        text += Row("What to do", run.Why->Mend);
        text += Row("Ask for", run.Why->Ask);
        text += LinesText("What the log says of it", run.Why->Lines);
    } else if (!run.Where.empty()) {
        text += Row("Where", run.Where);
    }
    return text;
}

std::string StopText(const explain::Stop& stop) {
    std::string text = Heading("The log stops with") + LineText(stop.Last);
    text += Row("  It waits", stop.WaitsFor.empty() ? "for nothing that is known to take long"
                                                    : "for: " + stop.WaitsFor);
    text += Row("  What to do", stop.Mend);
    text += Row("  Silence", stop.Silent ? DurationText(*stop.Silent) + ", then another run began"
                                         : "to the end of the file; nothing says how long");
    text += Heading("Four things can have happened");
    for (const explain::Possibility& one : explain::Possibilities()) {
        text += "  " + In(Colour::Bold, std::string(one.What)) + "\n      " +
                Wrapped(std::string(one.SpeaksFor), 6) + "      " +
                Wrapped("-> " + std::string(one.Mend), 6);
    }
    if (stop.MayHaveEndedItself) {
        text += "  " + Wrapped("The last line is of the cleanup, where a fault in an INF ends the "
                               "process without a word: run PacketCheck check on the packet.",
                               4);
    }
    return text;
}

std::string FunctionsText(const Explanation& run) {
    std::string text =
        run.Functions.empty() ? "" : Heading("Functions, their INF, and what came of it");
    std::size_t device = 0;
    std::size_t inf = 0;
    for (const explain::FunctionResult& row : run.Functions) {
        device = std::max(device, row.Device.size());
        inf = std::max(inf, row.Inf.size());
    }
    for (const explain::FunctionResult& row : run.Functions) {
        std::string name = row.Device;
        std::string file = row.Inf;
        name.resize(device, ' ');
        file.resize(inf, ' ');
        text += "  " + name + (device == 0 ? "" : "  ") + file + "  " +
                In(row.IsGood ? Colour::Green : Colour::Red, row.Result) + "\n";
    }
    return text;
}

std::string TimesText(const Explanation& run) {
    std::string text = run.Gaps.empty() ? "" : Heading("Where nothing was said for a while");
    for (const explain::Gap& gap : run.Gaps) {
        text += "  " + Wrapped(DurationText(gap.Length) + " after line " +
                                   std::to_string(gap.After) + " (" + OneLine(gap.Text) + ")" +
                                   (gap.WaitsFor.empty() ? "" : " - awaited: " + gap.WaitsFor),
                               4);
    }
    std::vector<explain::StepTime> slow = run.Steps;
    std::stable_sort(slow.begin(), slow.end(),
                     [](const auto& one, const auto& two) { return one.Length > two.Length; });
    constexpr std::size_t Most = 3;
    slow.resize(std::min(slow.size(), Most));
    text += slow.empty() || slow.front().Length == 0 ? "" : Heading("The slowest steps");
    for (const explain::StepTime& step : slow) {
        if (step.Length != 0) {
            text += "  " + DurationText(step.Length) + "  " + step.Name +
                    (step.InRollback ? " (rollback)" : "") + ", from line " +
                    std::to_string(step.FirstLine) + "\n";
        }
    }
    return text;
}

std::string OutcomeWord(const Explanation& run) {
    switch (run.End) {
    case Ending::Success:
        return run.Doubts.empty() ? "success" : "doubtful";
    case Ending::Failure:
        return "failure";
    default:
        return "stopped";
    }
}

// Under which head a log is counted.
std::string CauseWord(const LogLine& log) {
    if (log.LastRun.empty()) {
        return log.Reason;
    }
    const Explanation& run = log.LastRun.front();
    return run.Why ? run.Why->Name : OutcomeWord(run);
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string LogLineText(const LogLine& log, std::size_t width) {
    const std::string name = Padded(log.File, width);
    if (log.LastRun.empty()) {
        return name + "  " + log.Reason + "\n";
    }
    const Explanation& run = log.LastRun.front();
    return name + "  " + (run.Began ? explain::TimeText(*run.Began) : std::string(19, ' ')) + "  " +
           In(ColourOf(run), Padded(OutcomeWord(run), 8)) + "  " + run.Verdict + "\n";
}

} // namespace

std::string ExplanationText(const Explanation& run) {
    std::string text = HeadText(run) + CauseText(run);
    text += run.Stops ? StopText(*run.Stops) : "";
    text += ListText("Reasons for doubt", run.Doubts);
    text += ListText("From the packet", run.FromPacket);
    text += FunctionsText(run);
    text += ListText(run.RolledBack ? "What the rollback left" : "What is left", run.Left);
    text += LinesText("Failures that did not matter", run.Harmless);
    text += TimesText(run);
    text += LinesText("Lines after the end", run.AfterTheEnd);
    return text + ListText("About the log", run.Remarks);
}

std::string SummaryText(const std::vector<LogLine>& logs) {
    std::map<std::string, std::size_t> counts;
    std::size_t width = 0;
    for (const LogLine& log : logs) {
        width = std::max(width, log.File.size());
        ++counts[CauseWord(log)];
    }
    std::string text;
    for (const LogLine& log : logs) {
        text += LogLineText(log, width);
    }
    std::vector<std::pair<std::string, std::size_t>> sorted(counts.begin(), counts.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& one, const auto& two) { return one.second > two.second; });
    text += Heading(std::to_string(logs.size()) + (logs.size() == 1 ? " log" : " logs"));
    for (const auto& [cause, count] : sorted) {
        const std::string number = std::to_string(count);
        text += std::string(number.size() < 6 ? 6 - number.size() : 0, ' ') + number + "  " +
                cause + "\n";
    }
    return text;
}

} // namespace output
