#include "explain/story.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

namespace explain {

namespace {

constexpr Time ShortestGap = 1000;
constexpr std::size_t MostGaps = 5;

// These belong to whatever step asks for them.
bool BelongsToAnyStep(std::string_view step) {
    return step == "INF reading" || step == "Scripted operations" || step == "Driver packet" ||
           step == "Hook";
}

std::string_view StepNamed(const Entry& entry, std::string_view current, bool inRollback) {
    if (entry.Known == nullptr) {
        return current;
    }
    if (entry.Is("Setup: Setup process")) {
        return entry.Is("Setup: Setup process fail,begin") ? current : "End";
    }
    const std::string_view step = entry.Known->Step;
    if (step == "Entry" || step == "Progress window and language") {
        return "Start";
    }
    if (step == "Driver packet" && (current == "Start" || current.empty())) {
        return "Cleanup";
    }
    // Whoever needs the device's IDs asks for them so.
    if (entry.Is("GetCompositeDeviceID")) {
        return current == "Cleanup" || inRollback ? "Uninstall and rollback" : current;
    }
    if (entry.Is("RemoveFile") && !current.empty() && current != "Start") {
        return current;
    }
    return BelongsToAnyStep(step) ? current : step;
}

std::size_t CountUpTo(const View& view, const Entry& entry, std::string_view beginning) {
    const Entries& lines = view.Whole().Lines;
    return static_cast<std::size_t>(std::count_if(
        lines.data(), &entry + 1, [beginning](const Entry& line) { return line.Is(beginning); }));
}

// The page's texts may have a name in the middle.
bool BeginsLike(std::string_view text, std::string_view known) {
    const std::size_t percent = known.find('%');
    if (percent == std::string_view::npos) {
        // A name with nothing behind it is the whole first line.
        return text.starts_with(known) && (!known.ends_with(':') || text == known ||
                                           text.substr(known.size()).starts_with('\n'));
    }
    const std::string_view behind = known.substr(known.find_first_of("sdX", percent) + 1);
    return text.starts_with(known.substr(0, percent)) &&
           text.find(behind.substr(0, behind.find('%')), percent) != std::string_view::npos;
}

std::string AfterStart(const View& view, std::size_t line) {
    const Entries& lines = view.Whole().Lines;
    const auto at = std::find_if(lines.begin(), lines.end(),
                                 [line](const Entry& entry) { return entry.Number == line; });
    const bool isTimed = at != lines.end() && at->When && lines.front().When;
    return isTimed ? ", " + DurationText(*at->When - *lines.front().When) + " after the start" : "";
}

ToldLine LastLine(const View& view) {
    return Tell(view.Whole().Lines.back());
}

} // namespace

std::string DurationText(Time milliseconds) {
    constexpr Time Second = 1000;
    constexpr Time Minute = 60 * Second;
    constexpr Time Hour = 60 * Minute;
    std::array<char, 48> text{};
    if (milliseconds < 10 * Second) {
        std::snprintf(text.data(), text.size(), "%.1f s",
                      static_cast<double>(milliseconds) / Second);
    } else if (milliseconds < 2 * Minute) {
        std::snprintf(text.data(), text.size(), "%lld s", milliseconds / Second);
    } else if (milliseconds < 2 * Hour) {
        std::snprintf(text.data(), text.size(), "%lld min %lld s", milliseconds / Minute,
                      milliseconds % Minute / Second);
    } else {
        std::snprintf(text.data(), text.size(), "%lld h %lld min", milliseconds / Hour,
                      milliseconds % Hour / Minute);
    }
    return text.data();
}

std::vector<StepTime> StepsOf(const View& view) {
    std::vector<StepTime> steps;
    std::string_view current;
    bool inRollback = false;
    std::optional<Time> latest;
    for (const Entry& entry : view.Whole().Lines) {
        // The other threads write in the middle of the main thread's steps.
        const std::string_view step = StepNamed(entry, current, inRollback);
        const bool begins = steps.empty() || step != current;
        latest = entry.When ? entry.When : latest;
        if (latest && begins && !step.empty()) {
            steps.push_back({std::string(step), inRollback, entry.Number, *latest, 0});
        }
        if (!steps.empty() && latest) {
            if (begins && steps.size() > 1) {
                steps[steps.size() - 2].Length = *latest - steps[steps.size() - 2].Begin;
            }
            steps.back().Length = *latest - steps.back().Begin;
        }
        current = step;
        inRollback |= entry.Is("Setup: Setup process fail,begin");
    }
    return steps;
}

const KnownStop* WaitBehind(const View& view, const Entry& entry) {
    const KnownStop* best = nullptr;
    for (const KnownStop& stop : KnownStops()) {
        const bool fits = BeginsLike(entry.Text, stop.Text) &&
                          (!stop.OnlyUninstall || view.IsUninstall()) &&
                          (stop.Nth < 2 || CountUpTo(view, entry, stop.Text) >= stop.Nth);
        if (fits && (best == nullptr || stop.Text.size() > best->Text.size())) {
            best = &stop;
        }
    }
    return best;
}

std::vector<Gap> GapsOf(const View& view) {
    std::vector<Gap> gaps;
    const Entry* before = nullptr;
    for (const Entry& entry : view.Whole().Lines) {
        if (before != nullptr && before->When && entry.When &&
            *entry.When - *before->When >= ShortestGap) {
            const KnownStop* const wait = WaitBehind(view, *before);
            gaps.push_back({before->Number, *before->When, *entry.When - *before->When,
                            before->Text, wait == nullptr ? "" : std::string(wait->WaitsFor),
                            before->Thread});
        }
        before = &entry;
    }
    std::stable_sort(gaps.begin(), gaps.end(),
                     [](const Gap& one, const Gap& two) { return one.Length > two.Length; });
    gaps.resize(std::min(gaps.size(), MostGaps));
    return gaps;
}

std::optional<Stop> StopOf(const View& view) {
    if (view.End() != Ending::Stopped || view.Whole().Lines.empty()) {
        return std::nullopt;
    }
    const Entry& last = view.Whole().Lines.back();
    Stop stop;
    stop.Last = LastLine(view);
    if (const KnownStop* const wait = WaitBehind(view, last)) {
        stop.WaitsFor = wait->WaitsFor;
        stop.Mend = wait->Mend;
    }
    if (last.When && view.Whole().NextBegan) {
        stop.Silent = *view.Whole().NextBegan - *last.When;
    }
    stop.MayHaveEndedItself =
        !view.IsRolledBack() && last.Known != nullptr &&
        (last.Known->Step == "Cleanup" || last.Known->Step == "Driver packet");
    return stop;
}

std::string PlaceOf(const View& view, const std::vector<StepTime>& steps, std::size_t line) {
    std::vector<std::string> names;
    const StepTime* place = nullptr;
    for (const StepTime& step : steps) {
        if (step.InRollback || step.Name == "End" || step.FirstLine > line) {
            break;
        }
        if (place != nullptr && (names.empty() || names.back() != place->Name)) {
            names.push_back(place->Name);
        }
        place = &step;
    }
    if (place == nullptr) {
        return {};
    }
    std::string text = place->Name + AfterStart(view, line);
    for (std::size_t index = 0; index < names.size(); ++index) {
        text += (index == 0 ? "; before it: " : ", ") + names[index];
    }
    return text;
}

} // namespace explain
