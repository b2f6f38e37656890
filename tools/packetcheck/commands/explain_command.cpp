#include "commands/explain_command.h"

#include "commands/arguments.h"
#include "commands/packet_folders.h"
#include "explain/explain.h"
#include "explain/with_packet.h"
#include "output/explain_json.h"
#include "output/explain_text.h"
#include "output/files.h"
#include "output/pages/explain_html.h"
#include "output/terminal.h"
#include "output/utf8.h"
#include "platform/platform.h"
#include "rules/packet.h"

#include <algorithm>
#include <stdexcept>

namespace commands {

namespace {

constexpr std::string_view NotOurs = "no line of Setup.exe in it";

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsLog(const rules::PacketFile& file) {
    std::wstring name = file.Name;
    std::transform(name.begin(), name.end(), name.begin(), towlower);
    return !file.IsFolder && (name.ends_with(L".log") || name.ends_with(L".txt"));
}

output::LogLine SummaryOf(const std::wstring& folder, const std::wstring& name) {
    output::LogLine line;
    line.File = Utf8(name);
    try {
        line.LastRun = explain::ExplainLog(folder + L"\\" + name, false).Runs;
        line.Reason = NotOurs;
        // Ten thousand logs are held side by side: the sentences are enough.
        for (explain::Explanation& run : line.LastRun) {
            run.Lines.clear();
        }
    } catch (const std::runtime_error&) {
        line.Reason = "cannot be read";
    }
    return line;
}

int ExplainFolder(const std::wstring& folder, const ExplainOptions& options) {
    if (!options.HtmlFile.empty() || !options.Packet.empty() || options.All) {
        throw std::runtime_error("--html, --packet and --all are for one log, not for a folder");
    }
    std::vector<output::LogLine> logs;
    std::vector<explain::Explanation> runs;
    for (const rules::PacketFile& file : rules::ListFolder(folder, true)) {
        if (IsLog(file)) {
            terminal::ShowProgress("reading " + Utf8(file.Name));
            logs.push_back(SummaryOf(folder, file.Name));
            for (explain::Explanation& run : logs.back().LastRun) {
                run.File = logs.back().File;
                runs.push_back(run);
            }
        }
    }
    terminal::ShowProgress("");
    if (logs.empty()) {
        throw std::runtime_error(Utf8(folder) + " has no *.log and no *.txt");
    }
    if (!options.JsonFile.empty()) {
        output::WriteFile(Wide(options.JsonFile), output::ExplanationJson(runs));
    } else {
        terminal::Print(output::SummaryText(logs));
    }
    return runs.empty() ? Findings : NothingFound;
}

void Write(const std::vector<explain::Explanation>& runs, const ExplainOptions& options) {
    if (!options.JsonFile.empty()) {
        output::WriteFile(Wide(options.JsonFile), output::ExplanationJson(runs));
    }
    if (!options.HtmlFile.empty()) {
        output::WriteFile(Wide(options.HtmlFile), output::ExplanationHtml(runs));
    }
    if (options.JsonFile.empty() && options.HtmlFile.empty()) {
        std::string text;
        for (const explain::Explanation& run : runs) {
            text += (text.empty() ? "" : "\n" + std::string(100, '-') + "\n") +
                    output::ExplanationText(run);
        }
        terminal::Print(text);
    }
}

} // namespace

int RunExplain(const ExplainOptions& options) {
    const std::wstring path = FullFilePath(options.Log);
    if (IsFolder(path)) {
        return ExplainFolder(FullPath(options.Log), options);
    }
    terminal::ShowProgress("reading " + options.Log);
    explain::LogExplanation log = explain::ExplainLog(path, options.All);
    terminal::ShowProgress("");
    if (log.Runs.empty()) {
        terminal::Complain(options.Log + ": " + std::string(NotOurs));
        return Findings;
    }
    if (!options.Packet.empty()) {
        for (explain::Explanation& run : log.Runs) {
            explain::AddFromPacket(run, FullPath(options.Packet));
        }
    }
    Write(log.Runs, options);
    return NothingFound;
}

} // namespace commands
