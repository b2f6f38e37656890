#include "proof/told.h"

#include <algorithm>
#include <cctype>

namespace proof {

namespace {

constexpr std::string_view Rollback = "Setup: Setup process fail,begin rollback...";

bool NamesOem(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('\\') + 1);
    return name.size() > 3 && (name.starts_with("oem") || name.starts_with("OEM"));
}

// The path of a "RemoveFile: ..." line; empty for every other line.
std::string RemovedPath(const std::string& line) {
    for (const auto& [before, after] :
         {std::pair{"RemoveFile: File ", " not exist"},
          std::pair{"RemoveFile: File ", " was deleted successfully"},
          std::pair{"RemoveFile: Error in deleting file : ", ", error code"}}) {
        const Lines found = Between({line}, before, after);
        if (!found.empty()) {
            return found.front();
        }
    }
    return {};
}

bool IsIncomparable(const std::string& line) {
    return line.find("thread started") != std::string::npos || line.starts_with("Execut") ||
           line.starts_with("UnInstall: SetupDiCallClassInstaller") ||
           // Which copies there are, and which of them Windows offers for a device, is not the
           // packet's business alone.
           line.starts_with("UnInstall: Normal uninstall inf ") || NamesOem(RemovedPath(line));
}

} // namespace

Lines BeforeRollback(const Lines& log) {
    return {log.begin(), std::find(log.begin(), log.end(), Rollback)};
}

Lines OfRollback(const Lines& log) {
    return {std::find(log.begin(), log.end(), Rollback), log.end()};
}

Lines Between(const Lines& log, std::string_view before, std::string_view after) {
    Lines found;
    for (const std::string& line : log) {
        if (!line.starts_with(before)) {
            continue;
        }
        const std::size_t end = after.empty() ? line.size() : line.find(after, before.size());
        if (end != std::string::npos) {
            found.push_back(line.substr(before.size(), end - before.size()));
        }
    }
    return found;
}

Lines WantedGone(const Lines& log) {
    Lines paths;
    for (const std::string& line : log) {
        const std::string path = RemovedPath(line);
        // A name without a folder is only told as not existing: nothing is looked for.
        const bool isWhole = path.starts_with("\\\\") || path.substr(0, 3).ends_with(":\\");
        if (isWhole && !NamesOem(path)) {
            paths.push_back(path);
        }
    }
    return paths;
}

Lines Comparable(const Lines& log) {
    Lines lines;
    for (const std::string& line : log) {
        if (IsIncomparable(line)) {
            continue;
        }
        const std::string path = RemovedPath(line);
        const std::size_t thread = line.find(" from thread 0x");
        lines.push_back(path.empty() ? line.substr(0, thread) : "RemoveFile: " + path);
    }
    return lines;
}

std::string Difference(const Lines& planned, const Lines& run) {
    if (planned == run) {
        return {};
    }
    const auto [inPlan, inRun] =
        std::mismatch(planned.begin(), planned.end(), run.begin(), run.end());
    return "line " + std::to_string(inPlan - planned.begin()) +
           "\n  planned: " + (inPlan == planned.end() ? "(the end)" : *inPlan) +
           "\n  run:     " + (inRun == run.end() ? "(the end)" : *inRun);
}

Lines TextsOf(const Json& list) {
    return list.get<Lines>();
}

Lines TextsOf(const Json& list, const char* field) {
    Lines texts;
    for (const Json& entry : list) {
        texts.push_back(entry.at(field).get<std::string>());
    }
    return texts;
}

Lines FilledLines(const Json& run) {
    Lines lines;
    for (const Json& operation : run.at("operations")) {
        const bool isFile =
            operation.at("section").get<std::string>().find("FILE_OPER") != std::string::npos;
        if (operation.contains("refused")) {
            const std::string refused = operation.at("refused");
            lines.push_back(refused.substr(0, refused.rfind("error code")));
        } else if (!operation.at("does").empty()) {
            const std::string filled = operation.at("filled");
            lines.push_back(isFile ? "ExecutSingleFileOper: File oper req " + filled + " fail,"
                                   : "ExecuteSingleRegeditReq: Register operation fail, req " +
                                         filled + " ");
        }
    }
    return lines;
}

} // namespace proof
