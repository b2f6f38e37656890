#include "explain/view.h"

#include <algorithm>

namespace explain {

namespace {

constexpr std::string_view BeginsRollback = "Setup: Setup process fail,begin rollback";
constexpr std::string_view Succeeded = "Setup: Setup process complete";
constexpr std::string_view Failed = "Setup: Setup process fail,see";

bool IsOfStep(const Entry& entry, std::string_view step) {
    return entry.Known != nullptr && entry.Known->Step == step;
}

std::string CodeText(const Entry& entry) {
    const std::optional<std::uint32_t> code = entry.Code();
    // The program sets these two itself, so they are right in a line whose code is not.
    constexpr std::uint32_t TooShort = 0x57;
    constexpr std::uint32_t TooLong = 0xCE;
    if (!code || *code == 0) {
        return {};
    }
    if (HasStaleCode(entry.Text) && *code != TooShort && *code != TooLong) {
        return "the code belongs to an earlier call and says nothing";
    }
    const KnownCode* const known = CodeNamed(*code);
    return known == nullptr ? std::string("a code that Windows' documentation explains")
                            : std::string(known->Name).append(": ").append(known->Meaning);
}

} // namespace

View::View(const Run& run) : run_(run) {
    for (std::size_t index = 0; index < run.Lines.size(); ++index) {
        const Entry& entry = run.Lines[index];
        if (entry.Is(BeginsRollback) && rollback_ == NoLine) {
            rollback_ = index;
        } else if ((entry.Is(Succeeded) || entry.Is(Failed)) && closing_ == NoLine) {
            closing_ = index;
        }
    }
}

Part View::Main() const {
    return Part(run_.Lines).first(std::min({rollback_, closing_, run_.Lines.size()}));
}

Part View::Rollback() const {
    if (rollback_ == NoLine) {
        return {};
    }
    const std::size_t end = std::min(closing_, run_.Lines.size());
    return Part(run_.Lines).subspan(rollback_ + 1, end - rollback_ - 1);
}

Part View::AfterEnd() const {
    return closing_ == NoLine ? Part() : Part(run_.Lines).subspan(closing_ + 1);
}

bool View::IsUninstall() const {
    return !IsInstall() && std::any_of(Main().begin(), Main().end(), [](const Entry& entry) {
        return IsOfStep(entry, "Uninstall and rollback");
    });
}

bool View::IsInstall() const {
    static const std::vector<std::string_view> steps = {
        "Hook", "Cleanup", "Staging", "Mode switch", "Matching", "Direct installation"};
    return IsRolledBack() || std::any_of(Main().begin(), Main().end(), [](const Entry& entry) {
               // Both kinds of run delete files.
               return !entry.Is("RemoveFile") &&
                      std::any_of(steps.begin(), steps.end(),
                                  [&](auto step) { return IsOfStep(entry, step); });
           });
}

Ending View::End() const {
    if (closing_ == NoLine) {
        return Ending::Stopped;
    }
    return run_.Lines[closing_].Is(Succeeded) ? Ending::Success : Ending::Failure;
}

const Entry* FirstOf(Part part, std::string_view beginning) {
    const auto found = std::find_if(
        part.begin(), part.end(), [beginning](const Entry& entry) { return entry.Is(beginning); });
    return found == part.end() ? nullptr : &*found;
}

const Entry* LastOf(Part part, std::string_view beginning) {
    const auto found = std::find_if(part.rbegin(), part.rend(), [beginning](const Entry& entry) {
        return entry.Is(beginning);
    });
    return found == part.rend() ? nullptr : &*found;
}

bool IsPassedOver(Part part, std::size_t index) {
    // The composite set-up after staging cannot fail the run; in the matching it can.
    for (std::size_t before = index + 1; before-- > 0;) {
        const Entry& entry = part[before];
        if (entry.Is("pre CompositeDeviceSetup")) {
            return true;
        }
        const bool isOfIt = IsOfStep(entry, "Composite devices") ||
                            IsOfStep(entry, "INF reading") || IsOfStep(entry, "Driver packet");
        if (!isOfIt) {
            return false;
        }
    }
    return false;
}

ToldLine Tell(const Entry& entry) {
    ToldLine told;
    told.Number = entry.Number;
    told.When = entry.When;
    told.Text = entry.Text;
    told.CodeMeaning = CodeText(entry);
    if (entry.Known != nullptr) {
        told.Meaning = entry.Known->Meaning;
        told.Means = entry.Known->Means;
    }
    return told;
}

} // namespace explain
