#include "explain/find_cause.h"

#include <algorithm>

namespace explain {

namespace {

Cause CauseOf(std::string_view name, std::vector<ToldLine> lines) {
    const KnownCause& known = CauseNamed(name);
    return {std::string(known.Name), std::string(known.Happened), {},
            std::string(known.Mend), std::string(known.Ask),      std::move(lines)};
}

// The cause that the page names for a line; empty when it names none.
std::string_view CauseToldBy(const Entry& entry) {
    const std::uint32_t code = entry.Code().value_or(AnyCode);
    for (const Told& told : ToldCauses()) {
        if (entry.Known != nullptr && told.Text == entry.Known->Text &&
            (told.Code == AnyCode || told.Code == code)) {
            return told.Cause;
        }
    }
    return {};
}

std::vector<ToldLine> Told(const std::vector<const Entry*>& entries) {
    std::vector<ToldLine> lines;
    for (const Entry* const entry : entries) {
        lines.push_back(Tell(*entry));
    }
    return lines;
}

// The device or file that the line names, and what Windows said of it.
std::string DetailOf(const Entry& entry) {
    std::string detail = entry.Code() ? entry.Values.size() > 1 ? entry.Values.front() : "" : "";
    const KnownCode* const code = entry.Code() ? CodeNamed(*entry.Code()) : nullptr;
    if (code != nullptr && *entry.Code() != 0 && !HasStaleCode(entry.Text)) {
        detail += (detail.empty() ? "" : ", ") + std::string(code->Name);
    }
    return detail;
}

// A staging that failed: its last message says how.
std::optional<Cause> FindInStaging(Part main) {
    constexpr std::string_view Message = "PreInstall: Message 0x";
    const Entry* const message = FirstOf(main, Message);
    if (message == nullptr || message->Is("PreInstall: Message 0x7EB")) {
        return std::nullopt;
    }
    if (message->Is("PreInstall: Message 0x7EA")) {
        const Entry* copying = nullptr;
        for (const Entry& entry : main) {
            if (entry.Is("PreInstallWorkItemThreadFun: Copying inf") && entry.Means(Effect::Ends)) {
                copying = &entry;
            }
        }
        if (copying == nullptr) {
            return CauseOf("staging-refused", Told({message}));
        }
        Cause cause = CauseOf(CauseToldBy(*copying), Told({copying, message}));
        cause.Detail = DetailOf(*copying);
        return cause;
    }
    if (!message->Is("PreInstall: Message 0x7E9")) {
        return CauseOf("staging-cut-short", Told({message}));
    }
    const Entry* const started = LastOf(main, "PreInstallWorkItemThreadFun: Copying inf to system");
    constexpr Time AtOnce = 1000;
    const bool hadNoTime = started == nullptr || (message->When && started->When &&
                                                  *message->When - *started->When < AtOnce);
    return CauseOf(hadNoTime ? "staging-without-time" : "staging-too-long",
                   started == nullptr ? Told({message}) : Told({started, message}));
}

// The lines that end the run, the last one and those right above it, the first of them first.
std::vector<const Entry*> EndingLines(Part main) {
    std::vector<const Entry*> lines;
    for (std::size_t index = main.size(); index-- > 0;) {
        const Entry& entry = main[index];
        const bool ends = entry.Means(Effect::Ends) && !IsPassedOver(main, index);
        if (ends) {
            lines.insert(lines.begin(), &entry);
        } else if (!lines.empty() && !entry.Means(Effect::GoesOn)) {
            break;
        }
    }
    return lines;
}

bool IsOrderSent(Part main) {
    return FirstOf(main, "ShiftDevice: IOCTL send finish") != nullptr ||
           FirstOf(main, "ShiftDevice: Send SCSI cmd") != nullptr;
}

bool IsCount(const Entry& entry) {
    return entry.Text.find(" devices matched in match cycle ") != std::string::npos;
}

bool WereCounted(Part main) {
    return std::any_of(main.begin(), main.end(), IsCount);
}

// "No device matched" has three reasons; the lines before it tell which.
std::optional<Cause> FindInMatching(Part main) {
    constexpr std::string_view MaxCycle = "AutoDeviceMatch: Max Cycle reached";
    if (const Entry* const none = LastOf(main, "AutoDeviceMatch: No device matched")) {
        const std::string_view name = WereCounted(main)   ? "device-pulled"
                                      : IsOrderSent(main) ? "switched-and-nothing-came"
                                                          : "device-not-there";
        return CauseOf(name, Told({none}));
    }
    const Entry* const last = LastOf(main, "AutoDeviceMatch");
    if (last != nullptr && last->Is(MaxCycle)) {
        Cause cause = CauseOf("functions-missing", Told({last}));
        for (const Entry& entry : main) {
            if (IsCount(entry) && entry.Values.size() > 2) {
                cause.Detail = entry.Values[0] + " of " + entry.Values[2] + " were there";
            }
        }
        return cause;
    }
    return std::nullopt;
}

std::optional<Cause> FindInLines(Part main) {
    const std::vector<const Entry*> lines = EndingLines(main);
    for (const Entry* const line : lines) {
        const std::string_view name = CauseToldBy(*line);
        if (!name.empty()) {
            Cause cause = CauseOf(name, Told(lines));
            cause.Detail = DetailOf(*line);
            return cause;
        }
    }
    return std::nullopt;
}

std::string_view StepOf(const Entry& entry) {
    return entry.Known == nullptr ? std::string_view() : entry.Known->Step;
}

// Some steps fail without a line.
std::optional<Cause> FindWithoutLine(const View& view) {
    const Part main = view.Main();
    const bool onlyBegan = std::all_of(main.begin(), main.end(), [](const Entry& entry) {
        return StepOf(entry) == "Entry" || entry.Known == nullptr;
    });
    if (onlyBegan && !view.IsRolledBack()) {
        return view.Whole().HasBeginning ? std::optional(CauseOf("version-box", {})) : std::nullopt;
    }
    const Entry& last = main.back();
    if (last.Is("PreInstall: Workitem thread started") || StepOf(last) == "Staging") {
        return CauseOf("staging-cut-short", Told({&last}));
    }
    return CauseOf(view.IsRolledBack() ? "cleanup-broke-off" : "uninstall-broke-off",
                   Told({&last}));
}

} // namespace

std::optional<Cause> FindCause(const View& view) {
    const Part main = view.Main();
    if (view.End() == Ending::Success || main.empty() ||
        (view.End() == Ending::Stopped && !view.IsRolledBack())) {
        return std::nullopt;
    }
    for (const auto find : {FindInStaging, FindInMatching, FindInLines}) {
        if (std::optional<Cause> cause = find(main)) {
            return cause;
        }
    }
    return FindWithoutLine(view);
}

} // namespace explain
