#include "output/explain_json.h"

#include "explain/log_page.h"

#include <nlohmann/json.hpp>

namespace output {

namespace {

using explain::Explanation;
using explain::Time;
using explain::ToldLine;
using nlohmann::json;
using nlohmann::ordered_json;

template <typename List, typename Make>
ordered_json Each(const List& list, Make make) {
    ordered_json result = ordered_json::array();
    for (const auto& entry : list) {
        result.push_back(make(entry));
    }
    return result;
}

ordered_json TimeJson(const std::optional<Time>& time) {
    return time ? ordered_json(explain::TimeText(*time)) : ordered_json();
}

double Seconds(Time milliseconds) {
    return static_cast<double>(milliseconds) / 1000;
}

ordered_json LineJson(const ToldLine& line) {
    return {{"line", line.Number},
            {"text", line.Text},
            {"meaning", line.Meaning},
            {"code", line.CodeMeaning},
            {"more", line.More}};
}

const char* NameOf(explain::Ending end) {
    switch (end) {
    case explain::Ending::Success:
        return "success";
    case explain::Ending::Failure:
        return "failure";
    default:
        return "stopped";
    }
}

ordered_json CauseJson(const explain::Cause& cause) {
    return {{"name", cause.Name},     {"happened", cause.Happened},
            {"detail", cause.Detail}, {"mend", cause.Mend},
            {"ask", cause.Ask},       {"lines", Each(cause.Lines, LineJson)}};
}

ordered_json StopJson(const explain::Stop& stop) {
    return {{"last", LineJson(stop.Last)},
            {"waitsFor", stop.WaitsFor},
            {"mend", stop.Mend},
            {"silentSeconds", stop.Silent ? ordered_json(Seconds(*stop.Silent)) : ordered_json()},
            {"possibilities", Each(explain::Possibilities(), [](const auto& one) {
                 return ordered_json{
                     {"what", one.What}, {"speaksFor", one.SpeaksFor}, {"mend", one.Mend}};
             })}};
}

void AddTimes(const Explanation& run, ordered_json& result) {
    result["gaps"] = Each(run.Gaps, [](const explain::Gap& gap) {
        return ordered_json{{"afterLine", gap.After},
                            {"seconds", Seconds(gap.Length)},
                            {"text", gap.Text},
                            {"waitsFor", gap.WaitsFor}};
    });
    result["steps"] = Each(run.Steps, [](const explain::StepTime& step) {
        return ordered_json{{"name", step.Name},
                            {"inRollback", step.InRollback},
                            {"fromLine", step.FirstLine},
                            {"seconds", Seconds(step.Length)}};
    });
}

ordered_json HeadJson(const Explanation& run) {
    return {{"file", run.File},
            {"run", run.Ordinal},
            {"runsInFile", run.RunsInFile},
            {"firstLine", run.FirstLine},
            {"lastLine", run.LastLine},
            {"began", TimeJson(run.Began)},
            {"seconds", Seconds(run.Lasted)},
            {"generation", run.Generation},
            {"kind", run.Kind},
            {"outcome", NameOf(run.End)},
            {"rolledBack", run.RolledBack},
            {"verdict", run.Verdict}};
}

ordered_json RunJson(const Explanation& run) {
    ordered_json result = HeadJson(run);
    result["cause"] = run.Why ? CauseJson(*run.Why) : ordered_json();
    result["where"] = run.Where;
    result["stops"] = run.Stops ? StopJson(*run.Stops) : ordered_json();
    result["doubts"] = run.Doubts;
    result["fromPacket"] = run.FromPacket;
    result["functions"] = Each(run.Functions, [](const explain::FunctionResult& row) {
        return ordered_json{
            {"device", row.Device}, {"inf", row.Inf}, {"result", row.Result}, {"good", row.IsGood}};
    });
    result["left"] = run.Left;
    result["harmless"] = Each(run.Harmless, LineJson);
    AddTimes(run, result);
    result["afterTheEnd"] = Each(run.AfterTheEnd, LineJson);
    result["remarks"] = run.Remarks;
    return result;
}

} // namespace

std::string ExplanationJson(const std::vector<Explanation>& runs) {
    const ordered_json result = runs.size() == 1 ? RunJson(runs.front()) : Each(runs, RunJson);
    // Invalid UTF-8 of a log must not end the tool.
    return result.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace output
