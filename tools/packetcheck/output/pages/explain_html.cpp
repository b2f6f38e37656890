#include "output/pages/explain_html.h"

#include "explain/log_page.h"
#include "output/pages/html.h"
#include "output/pages/timeline_svg.h"

namespace output {

namespace {

using explain::DurationText;
using explain::Ending;
using explain::Explanation;
using explain::ToldLine;
using html::Element;
using html::Escaped;

using Rows = std::vector<std::vector<std::string>>;

std::string_view KindOf(const Explanation& run) {
    switch (run.End) {
    case Ending::Success:
        return run.Doubts.empty() ? "good" : "doubt";
    case Ending::Failure:
        return "bad";
    default:
        return "doubt";
    }
}

std::string Section(const std::string& heading, const std::string& body) {
    return body.empty() ? std::string() : Element("h2", heading) + "\n" + body;
}

std::string Code(const std::string& text) {
    return Element("code", Escaped(text));
}

std::string Pair(const std::string& name, const std::string& text) {
    return text.empty() ? std::string() : Element("dt", name) + Element("dd", Escaped(text)) + "\n";
}

std::string LinesTable(const std::vector<ToldLine>& lines) {
    Rows rows;
    for (const ToldLine& line : lines) {
        std::string meaning = Escaped(line.Meaning);
        if (!line.CodeMeaning.empty()) {
            meaning += (meaning.empty() ? "" : "<br>") + Escaped(line.CodeMeaning);
        }
        if (line.More != 0) {
            meaning += "<br>and " + std::to_string(line.More) + " more lines of this kind";
        }
        rows.push_back({std::to_string(line.Number), Code(line.Text), meaning});
    }
    return html::Table({"Line", "Text", "Meaning"}, rows);
}

std::string List(const std::vector<std::string>& texts) {
    std::string items;
    for (const std::string& text : texts) {
        items += Element("li", Escaped(text));
    }
    return items.empty() ? std::string() : Element("ul", items) + "\n";
}

std::string Head(const Explanation& run) {
    std::string where =
        run.File + ", run " + std::to_string(run.Ordinal) + " of " + std::to_string(run.RunsInFile);
    if (run.Began) {
        where += ", " + explain::TimeText(*run.Began);
    }
    where += run.Generation.empty() ? "" : ", " + run.Generation;
    return Element("div", Escaped(where), "soft") +
           Element("h1", Escaped(run.Verdict + "."), KindOf(run)) + "\n";
}

std::string CauseList(const Explanation& run) {
    std::string pairs;
    if (run.Why) {
        pairs = Pair("Cause",
                     run.Why->Happened + (run.Why->Detail.empty() ? "" : ": ") + run.Why->Detail) +
                Pair("Where", run.Where) + Pair("What to do", run.Why->Mend) +
                Pair("Ask for", run.Why->Ask);
    } else {
        pairs = Pair("Where", run.Where);
    }
    return pairs.empty() ? pairs : Element("dl", pairs) + "\n";
}

std::string StopPart(const explain::Stop& stop) {
    std::string pairs =
        Pair("Last line", stop.Last.Text) + Pair("Waits for", stop.WaitsFor) +
        Pair("What to do", stop.Mend) +
        Pair("Silence", stop.Silent ? DurationText(*stop.Silent) + ", then another run"
                                    : std::string("to the end of the file"));
    Rows rows;
    for (const explain::Possibility& one : explain::Possibilities()) {
        rows.push_back({Escaped(one.What), Escaped(one.SpeaksFor), Escaped(one.Mend)});
    }
    return Section("The log stops", Element("dl", pairs)) +
           Section("Four things can have happened",
                   html::Table({"", "Speaks for it", "What to do"}, rows));
}

std::string FunctionsTable(const Explanation& run) {
    Rows rows;
    for (const explain::FunctionResult& row : run.Functions) {
        rows.push_back({row.Device.empty() ? "" : Code(row.Device), Code(row.Inf),
                        Element("span", Escaped(row.Result), row.IsGood ? "good" : "bad")});
    }
    return html::Table({"Function", "INF", "Result"}, rows);
}

std::string StepsTable(const Explanation& run) {
    Rows rows;
    for (std::size_t index = 0; index < run.Steps.size(); ++index) {
        const explain::StepTime& step = run.Steps[index];
        const std::string swatch =
            "<span style=\"color:" + StepColour(index) + "\">&#9632;</span> ";
        rows.push_back({swatch + std::to_string(index + 1),
                        Escaped(step.Name + (step.InRollback ? " (rollback)" : "")),
                        DurationText(step.Length), "from line " + std::to_string(step.FirstLine)});
    }
    return html::Table({"", "Step", "Time", ""}, rows);
}

std::string GapsTable(const Explanation& run) {
    Rows rows;
    for (const explain::Gap& gap : run.Gaps) {
        rows.push_back({DurationText(gap.Length), std::to_string(gap.After), Code(gap.Text),
                        Escaped(gap.WaitsFor)});
    }
    return html::Table({"Time", "After line", "Text", "Waits for"}, rows);
}

std::string RunPart(const Explanation& run) {
    std::string body = Head(run) + CauseList(run);
    body += run.Stops ? StopPart(*run.Stops) : std::string();
    const std::string picture = TimelineSvg(run);
    body += picture.empty()
                ? picture
                : Section("Timeline", Element("div",
                                              "Each dot is a line of the log: red ends the run, "
                                              "amber is passed over. Shaded: waiting.",
                                              "soft") +
                                          picture);
    body += Section("Reasons for doubt", List(run.Doubts));
    body += Section("From the packet", List(run.FromPacket));
    body += Section("Functions", FunctionsTable(run));
    body += Section("What the log says of the cause",
                    run.Why ? LinesTable(run.Why->Lines) : std::string());
    body += Section(run.RolledBack ? "What the rollback left" : "What is left", List(run.Left));
    body += Section("Failures that did not matter", LinesTable(run.Harmless));
    body += Section("Where nothing was said for a while", GapsTable(run));
    body += Section("Steps", StepsTable(run));
    body += Section("Lines after the end", LinesTable(run.AfterTheEnd));
    return body + Section("About the log", List(run.Remarks));
}

} // namespace

std::string ExplanationHtml(const std::vector<Explanation>& runs) {
    std::string body;
    for (const Explanation& run : runs) {
        body += (body.empty() ? "" : "<hr>\n") + RunPart(run);
    }
    return html::Page(runs.empty() ? "PacketCheck" : runs.front().Verdict, body);
}

} // namespace output
