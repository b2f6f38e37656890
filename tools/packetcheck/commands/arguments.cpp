#include "commands/arguments.h"

#include "commands/check_command.h"
#include "commands/explain_command.h"
#include "commands/new_command.h"
#include "commands/plan_command.h"
#include "output/terminal.h"

#include <CLI/CLI.hpp>

namespace commands {

namespace {

CLI::App* AddCheck(CLI::App& app, CheckOptions& options) {
    CLI::App* const check = app.add_subcommand("check", "What is wrong with the packet");
    check->add_option("folder", options.Folder, "Folder with Setup.ini and the packet's folders")
        ->required();
    check->add_option("--generation", options.Generation,
                      "WIN10, WIN7, VISTA, WINXP, UNKNOWN; all that there are unless given");
    check->add_option("--modem", options.ModemFile, "description of the modem that it is for");
    check->add_option("--sarif", options.SarifFile, "write the findings to this file (SARIF)");
    check->add_flag("--strict", options.Strict, "warnings count like errors");
    return check;
}

CLI::App* AddPlan(CLI::App& app, PlanOptions& options) {
    CLI::App* const plan = app.add_subcommand("plan", "What a run will do with the packet");
    plan->add_option("folder", options.Folders, "Folder with Setup.ini and the packet's folders")
        ->required();
    auto* const install = plan->add_flag("-i,--install", options.Install, "an install (default)");
    plan->add_flag("-u,--uninstall", options.Uninstall, "an uninstall")->excludes(install);
    plan->add_option("--generation", options.Generation,
                     "WIN10, WIN7, VISTA, WINXP, UNKNOWN or all; the packet's newest unless given");
    plan->add_option("--at", options.At, "folder that the packet will be installed from");
    plan->add_option("--html", options.HtmlFile, "write a page to this file");
    plan->add_option("--json", options.JsonFile, "write the plan as data to this file");
    return plan;
}

CLI::App* AddExplain(CLI::App& app, ExplainOptions& options) {
    CLI::App* const explain = app.add_subcommand("explain", "What a run did, from its log");
    explain->add_option("log", options.Log, "Setup.log, or a folder with many logs")->required();
    explain->add_option("--packet", options.Packet, "the packet that the run was about");
    explain->add_flag("--all", options.All, "every run of the log, not only the last one");
    explain->add_option("--html", options.HtmlFile, "write a page with a picture to this file");
    explain->add_option("--json", options.JsonFile, "write it as data to this file");
    return explain;
}

CLI::App* AddNew(CLI::App& app, NewOptions& options) {
    CLI::App* const create = app.add_subcommand("new", "Write a packet to begin with");
    create->add_option("folder", options.Folder, "Folder to write it into, new or empty")
        ->required();
    create->add_option("--device", options.Device, "USB vendor and product, like 1234:5678")
        ->required();
    create
        ->add_option("--function", options.Functions,
                     "class of a function, and its name: Ports, Modem:\"Data modem\"; one for each")
        ->required();
    create->add_option("--storage", options.Storage,
                       "a CD-ROM before its switch: \"VENDOR,PRODUCT,REV\"");
    create->add_option("--scsi", options.ScsiCommand,
                       "the command that switches it: 11,06,20,00,00,01");
    create->add_option("--generation", options.Generations,
                       "WIN10, WIN7, VISTA, WINXP; all of them unless given");
    return create;
}

} // namespace

int Run(std::vector<std::string> arguments) {
    CLI::App app("Says what a driver packet will do before it ships, and what a run did.",
                 "PacketCheck");
    app.require_subcommand(1);
    // A path may begin with a slash.
    app.allow_windows_style_options(false);
    PlanOptions planOptions;
    CheckOptions checkOptions;
    ExplainOptions explainOptions;
    NewOptions newOptions;
    const CLI::App* const check = AddCheck(app, checkOptions);
    const CLI::App* const plan = AddPlan(app, planOptions);
    const CLI::App* const explain = AddExplain(app, explainOptions);
    const CLI::App* const create = AddNew(app, newOptions);
    // The parser takes them from the end.
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? NothingFound : WrongUse;
    }
    if (check->parsed()) {
        return RunCheck(checkOptions);
    }
    if (create->parsed()) {
        return RunNew(newOptions);
    }
    if (explain->parsed()) {
        return RunExplain(explainOptions);
    }
    return plan->parsed() ? RunPlan(planOptions) : WrongUse;
}

} // namespace commands
