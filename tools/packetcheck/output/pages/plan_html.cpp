#include "output/pages/plan_html.h"

#include "output/pages/html.h"
#include "output/plan_words.h"
#include "output/utf8.h"
#include "plan/operations.h"

namespace output {

namespace {

using html::Element;
using html::Escaped;

using Rows = std::vector<std::vector<std::string>>;

std::string Section(const std::string& heading, const std::string& body) {
    return body.empty() ? std::string() : Element("h2", Escaped(heading)) + "\n" + body;
}

std::string Code(const std::wstring& text) {
    return Element("code", Escaped(Utf8(text)));
}

std::string Head(const plan::Plan& plan) {
    const bool isGood = plan.Main.End == plan::Outcome::Success;
    std::string where = "On " + Utf8(plan.Generation) + ", packet folder " + Utf8(plan.Folder);
    where += plan.IsInstall ? ", MODE " + std::to_string(plan.Mode) : "";
    return Element("div", Escaped(where), "soft") +
           Element(
               "h1",
               Escaped(CommandOf(plan) + " " + OutcomeWord(plan.Main) + OutcomeReason(plan.Main)),
               isGood ? "good" : "bad") +
           Element("p", Escaped("With the device plugged in and all its functions arriving. " +
                                WaitsText(plan) + ".")) +
           "\n";
}

std::string InfsTable(const plan::Plan& plan) {
    Rows rows;
    for (const plan::Inf& inf : plan.Infs) {
        std::string ids;
        for (const std::wstring& id : inf.Ids) {
            ids += (ids.empty() ? "" : "<br>") + Code(id);
        }
        rows.push_back({Code(inf.Name), Escaped(ClassText(inf)), ids});
    }
    return html::Table({"INF", "Offered as", "IDs that the program knows"}, rows);
}

std::string StagingList(const plan::Plan& plan) {
    std::string items;
    if (plan.IsInstall && plan.Mode != 1) {
        for (const std::wstring& name : plan.Staging) {
            items += Element("li", Code(name));
        }
    }
    return items.empty() ? items : Element("ol", items) + "\n";
}

std::string PairsTable(const plan::Plan& plan) {
    Rows rows;
    for (const plan::Pair& pair : plan.Pairs) {
        rows.push_back({Code(pair.Id), Code(pair.Inf)});
    }
    return html::Table({"Device", "INF"}, rows);
}

std::string CountsTable(const plan::Plan& plan) {
    Rows rows;
    for (const plan::Expected& expected : plan.ExpectedCounts) {
        rows.push_back({Code(expected.BaseId), std::to_string(expected.Functions),
                        Element("span", CountWarning(expected), "bad")});
    }
    return html::Table({"Device", "Functions", ""}, rows);
}

std::string OperationsTable(const plan::Run& run) {
    Rows rows;
    for (const plan::Operation& operation : run.Operations) {
        std::string does = Element("span", Escaped(Utf8(operation.Refusal)), "bad");
        for (const rehearsal::Event& effect : operation.Effects) {
            does += Escaped(Utf8(plan::SentenceOf(effect))) + "<br>";
        }
        rows.push_back({Escaped(Utf8(operation.Section)) + "<br>" + Escaped(Utf8(operation.Key)),
                        Code(operation.Filled), does});
    }
    return html::Table({"Line", "Filled in", "What it does"}, rows);
}

std::string SettingsTable(const plan::Run& run) {
    Rows rows;
    for (const plan::Setting& setting : run.Settings) {
        const bool isSet = !setting.From.empty();
        rows.push_back(
            {Escaped(Utf8(setting.Section + L" " + setting.Key)), isSet ? Code(setting.Value) : "",
             isSet ? "[" + Escaped(Utf8(setting.From)) + "]" : Element("span", "not set", "soft")});
    }
    return html::Table({"Setting", "Value", "From"}, rows);
}

std::string Steps(const plan::Run& run) {
    std::string items;
    for (const plan::Step& step : run.Steps) {
        std::string details;
        for (const std::wstring& detail : step.Details) {
            details += Element("li", Escaped(Utf8(detail)));
        }
        items += Element("li", Element("strong", Escaped(Utf8(step.Title))) +
                                   (details.empty() ? "" : Element("ul", details))) +
                 "\n";
    }
    return items.empty() ? items : Element("ol", items) + "\n";
}

std::string PlanPart(const plan::Plan& plan) {
    std::string body = Head(plan) + Section("Which INF a device gets", PairsTable(plan)) +
                       Section("Functions that the matching waits for", CountsTable(plan)) +
                       Section("What the run does", Steps(plan.Main)) +
                       Section("INF files, as they are offered to the devices", InfsTable(plan)) +
                       Section("INF files, as they are staged", StagingList(plan)) +
                       Section("Lines for registry and files", OperationsTable(plan.Main)) +
                       Section("Settings", SettingsTable(plan.Main));
    if (plan.Rollback) {
        body += Section("What a rollback does", Steps(*plan.Rollback));
    }
    if (plan.Uninstall) {
        body += Section("What Setup.exe -u does afterwards", Steps(*plan.Uninstall));
    }
    return body;
}

} // namespace

std::string PlanHtml(const std::vector<plan::Plan>& plans) {
    std::string body;
    for (const plan::Plan& plan : plans) {
        body += (body.empty() ? "" : "<hr>\n") + PlanPart(plan);
    }
    return html::Page("The plan of a packet", body);
}

} // namespace output
