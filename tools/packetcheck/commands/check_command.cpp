#include "commands/check_command.h"

#include "commands/arguments.h"
#include "commands/packet_folders.h"
#include "output/files.h"
#include "output/findings_text.h"
#include "output/terminal.h"
#include "output/utf8.h"
#include "rules/check_packet.h"

namespace commands {

namespace {

// Unlike a plan, a check has something to say of a packet without any folder.
std::vector<Generation> GenerationsToCheck(const std::wstring& folder, const std::string& name) {
    return name == "all" ? GenerationsOf(folder) : ChosenGenerations(folder, name);
}

} // namespace

int RunCheck(const CheckOptions& options) {
    const std::wstring folder = FullPath(options.Folder);
    terminal::ShowProgress("reading " + options.Folder);
    rules::Packet packet =
        rules::ReadPacket(folder, GenerationsToCheck(folder, options.Generation));
    if (!options.ModemFile.empty()) {
        packet.Modem = reading::ReadModemDescription(FullFilePath(options.ModemFile));
    }
    const rules::Findings findings = rules::CheckPacket(packet);
    terminal::ShowProgress("");
    terminal::Print(output::FindingsText(findings));
    if (!options.SarifFile.empty()) {
        output::WriteFile(Wide(options.SarifFile), output::FindingsSarif(findings));
    }
    const std::size_t grave =
        Count(findings, rules::Level::Error) +
        (options.Strict ? Count(findings, rules::Level::Warning) : std::size_t{0});
    return grave == 0 ? NothingFound : Findings;
}

} // namespace commands
