#include "explain/results.h"

#include <algorithm>
#include <cstdlib>
#include <set>

namespace explain {

namespace {

constexpr std::string_view Copied = "was copied to inf";

bool HasText(const Entry& entry, std::string_view text) {
    return entry.Known != nullptr && entry.Known->Text.find(text) != std::string_view::npos;
}

std::string CodeSentence(const Entry& entry) {
    const std::string meaning = Tell(entry).CodeMeaning;
    const std::string code = entry.Values.empty() ? "" : "0x" + entry.Values.back();
    return meaning.empty() ? code : code + ", " + meaning.substr(0, meaning.find(':'));
}

class Table {
public:
    void Take(const Entry& entry) {
        if (entry.Known == nullptr) {
            return;
        }
        if (HasText(entry, Copied)) {
            rows_.push_back({"", FileNameIn(entry.Values[0]),
                             "staged as " + FileNameIn(entry.Values[1]), true});
        } else if (HasText(entry, "Copying inf %s to system inf floder fail")) {
            rows_.push_back({"", FileNameIn(entry.Values[0]), "refused: " + CodeSentence(entry)});
        } else if (HasText(entry, "UpdateInstall: Matched device")) {
            RowOf(entry.Values[0]);
        } else if (HasText(entry, "UpdateInstall:\n")) {
            RowOf(entry.Values[0]).Inf = FileNameIn(entry.Values[1]);
        } else {
            TakeOutcome(entry);
        }
    }

    std::vector<FunctionResult> Rows() && { return std::move(rows_); }

private:
    void TakeOutcome(const Entry& entry) {
        if (HasText(entry, "UpdateInstall: Device %s successfully installed")) {
            FunctionResult& row = RowOf(entry.Values[0]);
            row.Inf = FileNameIn(entry.Values[1]);
            row.Result = entry.Values[2] == "0" ? "installed" : "installed, needs a restart";
            row.IsGood = true;
        } else if (HasText(entry, "UpdateInstall: Device %s install failed")) {
            RowOf(entry.Values[0]).Result = "refused: " + CodeSentence(entry);
        } else if (HasText(entry, "UpdateInstall: No suitable inf")) {
            RowOf(entry.Values[0]).Result = "no INF for it";
        }
    }

    FunctionResult& RowOf(const std::string& device) {
        for (FunctionResult& row : rows_) {
            if (row.Device == device) {
                return row;
            }
        }
        return rows_.emplace_back(FunctionResult{device, "", "not come to"});
    }

    std::vector<FunctionResult> rows_;
};

int NumberIn(const Entry& entry, std::size_t index) {
    return index < entry.Values.size() ? std::atoi(entry.Values[index].c_str()) : 0;
}

const Entry* LastWith(Part part, std::string_view text) {
    const auto found = std::find_if(part.rbegin(), part.rend(),
                                    [text](const Entry& entry) { return HasText(entry, text); });
    return found == part.rend() ? nullptr : &*found;
}

std::size_t CountWith(Part part, std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        part.begin(), part.end(), [text](const Entry& entry) { return HasText(entry, text); }));
}

bool AsksForRestart(Part part) {
    return std::any_of(part.begin(), part.end(), [](const Entry& entry) {
        return (HasText(entry, "reboot status is") || HasText(entry, "reboot state is")) &&
               entry.Values.back() != "0";
    });
}

void DoubtInstall(const View& view, std::vector<std::string>& doubts) {
    const Part main = view.Main();
    if (const std::optional<Counted> counted = CountedFunctions(view);
        counted && counted->Found < counted->Listed) {
        doubts.push_back("the packet lists " + std::to_string(counted->Listed) +
                         " functions of the device, and " + std::to_string(counted->Found) +
                         " were enough for MATCHMODE: the others have no driver from this run");
    }
    const Entry* const mode = FirstOf(main, "AutoDeviceMatch: User set match mode to");
    if (doubts.empty() && mode != nullptr && NumberIn(*mode, 0) > 0) {
        doubts.push_back("MATCHMODE is set, so the run was content with " + mode->Values[0] +
                         " functions; whether the packet lists more is told with --packet");
    }
    if (FirstOf(main, "PreInstall: Inf to copy") == nullptr &&
        FirstOf(main, "AutoDeviceMatch: Auto matching") == nullptr) {
        doubts.emplace_back("nothing was staged and nothing installed: [INSTALL] MODE is none of "
                            "0, 1 and 2");
    }
    if (FirstOf(main, "AutoDeviceMatch: Max Cycle reached") != nullptr) {
        doubts.emplace_back("the last function came at the last moment; a slower computer fails: "
                            "raise MAXCYCLE");
    }
    if (FirstOf(main, "SetReInstallFlag: Failed") != nullptr) {
        doubts.emplace_back("a device that is plugged in may keep its old driver until it is "
                            "plugged again");
    }
}

// Something that was to go and stays, or a removal that broke off.
bool IsFailedRemoval(const Entry& entry) {
    const bool isRemoval =
        entry.Known != nullptr && (entry.Known->Step == "Uninstall and rollback" ||
                                   entry.Known->Step == "Tree refresh" || entry.Is("RemoveFile"));
    // A file that is deleted by force then has a line of its own about that.
    return isRemoval && (entry.Means(Effect::GoesOn) || entry.Means(Effect::Ends)) &&
           !HasText(entry, "trying to force delete it");
}

void AddFailures(Part part, std::vector<std::string>& left) {
    for (const Entry& entry : part) {
        if (IsFailedRemoval(entry)) {
            left.push_back("line " + std::to_string(entry.Number) + ": " + entry.Text + " (" +
                           std::string(entry.Known->Meaning) + ")");
        }
    }
}

// INF files of the store that nobody has taken out again.
void AddStagedInfs(Part main, Part removal, std::vector<std::string>& left) {
    std::set<std::string> gone;
    for (const Entry& entry : removal) {
        if (HasText(entry, "UnInstall: Normal uninstall inf") ||
            HasText(entry, "RemoveFile: File")) {
            std::string name = FileNameIn(entry.Values[0]);
            std::transform(name.begin(), name.end(), name.begin(), [](unsigned char letter) {
                return static_cast<char>(std::tolower(letter));
            });
            gone.insert(name);
        }
    }
    for (const Entry& entry : main) {
        if (HasText(entry, Copied) && !gone.contains(FileNameIn(entry.Values[1]))) {
            left.push_back(FileNameIn(entry.Values[1]) + ", the copy of " +
                           FileNameIn(entry.Values[0]) +
                           ", stays in the store of Windows: the next -i clears it");
        }
    }
}

// A copy that had not ended when the run gave it up may end later.
void AddUnfinishedCopy(Part main, std::vector<std::string>& left) {
    const Entry* begun = nullptr;
    for (const Entry& entry : main) {
        if (HasText(entry, "Copying inf %s to system inf floder...")) {
            begun = &entry;
        } else if (HasText(entry, Copied) || HasText(entry, "to system inf floder fail")) {
            begun = nullptr;
        }
    }
    if (begun != nullptr) {
        left.push_back(FileNameIn(begun->Values[0]) +
                       " was still being copied: it may be in the store of Windows all the same");
    }
}

// The same text again, with other values, is counted at its first occurrence.
bool CountWithLike(std::vector<ToldLine>& lines, const Entry& entry) {
    const auto like = std::find_if(lines.begin(), lines.end(), [&entry](const ToldLine& line) {
        return line.Meaning == entry.Known->Meaning && !line.Meaning.empty() &&
               line.Text.substr(0, line.Text.find(':')) ==
                   entry.Text.substr(0, entry.Text.find(':'));
    });
    if (like == lines.end()) {
        return false;
    }
    ++like->More;
    return true;
}

} // namespace

std::string FileNameIn(const std::string& path) {
    return path.substr(path.find_last_of("\\/") + 1);
}

std::vector<FunctionResult> FunctionsOf(const View& view) {
    Table table;
    for (const Entry& entry : view.Main()) {
        table.Take(entry);
    }
    return std::move(table).Rows();
}

std::optional<Counted> CountedFunctions(const View& view) {
    const Entry* const cycle = LastWith(view.Main(), "devices matched in match cycle");
    const Entry* const finish = LastWith(view.Main(), "Auto device match finish,total");
    if (cycle == nullptr) {
        return std::nullopt;
    }
    return Counted{finish == nullptr ? NumberIn(*cycle, 0) : NumberIn(*finish, 0),
                   NumberIn(*cycle, 2)};
}

std::vector<std::string> DoubtsOf(const View& view) {
    std::vector<std::string> doubts;
    if (view.End() != Ending::Success) {
        return doubts;
    }
    if (view.IsUninstall()) {
        if (CountWith(view.Main(), "UnInstall: Removing device") == 0) {
            doubts.emplace_back("no device of the packet was known to this Windows, so INF files "
                                "stay in its store: the next -i clears them");
        }
    } else {
        DoubtInstall(view, doubts);
    }
    if (AsksForRestart(view.Main())) {
        doubts.emplace_back("Windows asked for a restart; it is not done before that");
    }
    return doubts;
}

std::vector<std::string> LeftBehind(const View& view) {
    std::vector<std::string> left;
    const bool isRollback = view.IsRolledBack();
    const Part removal = isRollback ? view.Rollback() : view.Main();
    if (isRollback || view.IsUninstall()) {
        AddFailures(removal, left);
    }
    if (isRollback) {
        AddStagedInfs(view.Main(), removal, left);
        AddUnfinishedCopy(view.Main(), left);
        if (view.End() == Ending::Stopped) {
            left.emplace_back("the rollback itself has not come to its end");
        }
    }
    return left;
}

std::vector<ToldLine> HarmlessLines(const View& view, const std::optional<Cause>& why) {
    std::vector<ToldLine> harmless;
    const Part main = view.Main();
    for (std::size_t index = 0; index < main.size(); ++index) {
        const Entry& entry = main[index];
        const bool isOne =
            entry.Means(Effect::GoesOn) || (entry.Means(Effect::Ends) && IsPassedOver(main, index));
        const bool isCause = why && std::any_of(why->Lines.begin(), why->Lines.end(),
                                                [&entry](const ToldLine& line) {
                                                    return line.Number == entry.Number;
                                                });
        const bool isLeft = view.IsUninstall() && IsFailedRemoval(entry);
        if (isOne && !isCause && !isLeft && !CountWithLike(harmless, entry)) {
            harmless.push_back(Tell(entry));
        }
    }
    return harmless;
}

} // namespace explain
