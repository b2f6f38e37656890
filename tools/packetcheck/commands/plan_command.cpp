#include "commands/plan_command.h"

#include "commands/arguments.h"
#include "commands/packet_folders.h"
#include "output/files.h"
#include "output/pages/plan_html.h"
#include "output/plan_json.h"
#include "output/plan_text.h"
#include "output/terminal.h"
#include "output/utf8.h"
#include "plan/make_plan.h"

namespace commands {

namespace {

std::vector<plan::Plan> PlansOf(const PlanOptions& options) {
    std::vector<plan::Plan> plans;
    for (const std::string& folder : options.Folders) {
        const std::wstring path = FullPath(folder);
        for (const Generation& generation : ChosenGenerations(path, options.Generation)) {
            terminal::ShowProgress("planning " + folder + " for " + Utf8(generation.Name));
            plans.push_back(
                plan::MakePlan({path, Wide(options.At), generation, !options.Uninstall}));
        }
    }
    terminal::ShowProgress("");
    return plans;
}

} // namespace

int RunPlan(const PlanOptions& options) {
    const std::vector<plan::Plan> plans = PlansOf(options);
    if (!options.JsonFile.empty()) {
        output::WriteFile(Wide(options.JsonFile), output::PlanJson(plans));
    }
    if (!options.HtmlFile.empty()) {
        output::WriteFile(Wide(options.HtmlFile), output::PlanHtml(plans));
    }
    if (options.JsonFile.empty() && options.HtmlFile.empty()) {
        for (const plan::Plan& plan : plans) {
            terminal::Print(output::PlanText(plan));
        }
    }
    return NothingFound;
}

} // namespace commands
