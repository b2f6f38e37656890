#include "output/plan_text.h"

#include "output/plan_words.h"
#include "output/terminal.h"
#include "output/utf8.h"

#include <algorithm>

namespace output {

namespace {

using terminal::Colour;
using terminal::In;

std::string Heading(const std::string& text) {
    return "\n" + In(Colour::Bold, text) + "\n";
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

// Rows of cells, each column as wide as its widest cell.
std::string Table(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line = "  ";
        for (std::size_t column = 0; column < row.size(); ++column) {
            line += Padded(row[column], widths[column]) + "  ";
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string Verdict(const plan::Run& run) {
    const bool isGood = run.End == plan::Outcome::Success;
    return In(isGood ? Colour::Green : Colour::Red, OutcomeWord(run)) + OutcomeReason(run);
}

std::string Title(const plan::Plan& plan) {
    std::string text = In(Colour::Bold, CommandOf(plan) + " on " + Utf8(plan.Generation)) +
                       ", packet folder " + Utf8(plan.Folder) + ", " +
                       std::to_string(plan.Staging.size()) + " INF files";
    if (plan.IsInstall) {
        text += ", MODE " + std::to_string(plan.Mode);
    }
    return text + "\nWith the device plugged in and all its functions arriving, the run " +
           Verdict(plan.Main) + "\n" + WaitsText(plan) + "\n";
}

std::string InfsText(const plan::Plan& plan) {
    std::vector<std::vector<std::string>> rows;
    for (const plan::Inf& inf : plan.Infs) {
        rows.push_back({Utf8(inf.Name), ClassText(inf), std::to_string(inf.Ids.size()) + " ids"});
    }
    std::string text = Heading("INF files, as they are offered to the devices") + Table(rows);
    if (plan.Mode != 1 && plan.IsInstall) {
        text += Heading("INF files, as they are staged");
        for (const std::wstring& name : plan.Staging) {
            text += "  " + Utf8(name) + "\n";
        }
    }
    return text;
}

std::string PairsText(const plan::Plan& plan) {
    std::vector<std::vector<std::string>> rows;
    for (const plan::Pair& pair : plan.Pairs) {
        rows.push_back({Utf8(pair.Id), "->", Utf8(pair.Inf)});
    }
    return Heading("Which INF a device gets") + Table(rows);
}

std::string CountsText(const plan::Plan& plan) {
    std::vector<std::vector<std::string>> rows;
    for (const plan::Expected& expected : plan.ExpectedCounts) {
        rows.push_back({Utf8(expected.BaseId), std::to_string(expected.Functions) + " expected",
                        CountWarning(expected)});
    }
    return Heading("Functions that the matching waits for") + Table(rows);
}

std::string SettingsText(const plan::Run& run) {
    std::vector<std::vector<std::string>> rows;
    for (const plan::Setting& setting : run.Settings) {
        rows.push_back({Utf8(setting.Section) + " " + Utf8(setting.Key),
                        setting.From.empty() ? "-" : Utf8(setting.Value),
                        setting.From.empty() ? "not set" : "from [" + Utf8(setting.From) + "]"});
    }
    return Heading("Settings") + Table(rows);
}

std::string StepsText(const std::string& heading, const plan::Run& run) {
    std::string text = Heading(heading);
    for (const plan::Step& step : run.Steps) {
        text += "  " + In(Colour::Cyan, Utf8(step.Title)) + "\n";
        for (const std::wstring& detail : step.Details) {
            text += "    " + Utf8(detail) + "\n";
        }
    }
    return text;
}

} // namespace

std::string PlanText(const plan::Plan& plan) {
    std::string text = Title(plan) + InfsText(plan) + PairsText(plan) + CountsText(plan) +
                       SettingsText(plan.Main) + StepsText("Steps", plan.Main);
    if (plan.Rollback) {
        text += StepsText("A rollback", *plan.Rollback);
    }
    if (plan.Uninstall) {
        text += StepsText("Setup.exe -u afterwards", *plan.Uninstall);
    }
    return text;
}

} // namespace output
