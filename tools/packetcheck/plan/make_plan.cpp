#include "plan/make_plan.h"

#include "plan/operations.h"
#include "plan/packet_facts.h"
#include "plan/settings.h"
#include "plan/steps.h"
#include "rehearsal/play.h"

#include "common/run_state.h"
#include "config/config_reader.h"

#include <algorithm>

namespace plan {

namespace {

using rehearsal::Deed;
using rehearsal::Ending;
using rehearsal::Event;
using rehearsal::Recording;

constexpr std::wstring_view RollbackLine = L"Setup: Setup process fail,begin rollback...";

bool IsRollbackLine(const Event& event) {
    return event.What == Deed::Said && event.Subject == RollbackLine;
}

// The last thing that the run says before it gives up. Lines that only name the place do not count.
std::wstring LastWords(const std::vector<Event>& events) {
    const auto said = std::find_if(events.rbegin(), events.rend(), [](const Event& event) {
        return event.What == Deed::Said && !event.Subject.starts_with(L"GetDriverDir: ") &&
               !event.Subject.starts_with(L"Setup: Setup process fail");
    });
    return said == events.rend() ? std::wstring() : said->Subject;
}

Outcome OutcomeOf(const Recording& recording) {
    if (recording.End == Ending::ProcessEnded) {
        return Outcome::ProcessEnds;
    }
    if (recording.End == Ending::Endless) {
        return Outcome::Endless;
    }
    return recording.Result == 1 ? Outcome::Success : Outcome::Failure;
}

Run TellRun(const std::vector<Event>& events, Outcome outcome) {
    Run run;
    run.End = outcome;
    for (const Event& event : events) {
        if (event.What == Deed::Said) {
            run.Log.push_back(event.Subject);
        }
    }
    if (run.End != Outcome::Success) {
        run.Reason = LastWords(events);
    }
    run.Settings = SettingsOf(events);
    run.Operations = OperationsOf(events);
    TellSteps(events, run);
    return run;
}

// The three sequences, played one after the other.
struct Performance {
    Recording Install;
    Recording Rollback;
    Recording Uninstall;
};

// A failed install has been rolled back already; otherwise the rollback is played as if the very
// last step had failed. The uninstall finds the registry as the install left it.
Performance PlayAll(rehearsal::Stage& stage) {
    Performance played;
    played.Install = PlayInstall(stage);
    std::vector<Event>& events = played.Install.Events;
    const auto line = std::find_if(events.begin(), events.end(), IsRollbackLine);
    if (line != events.end()) {
        played.Rollback.Events.assign(line + 1, events.end());
        played.Rollback.Result = 1;
        events.erase(line, events.end());
    } else {
        const auto registry = stage.Registry;
        played.Rollback = PlayRollback(stage);
        stage.Registry = registry;
    }
    played.Uninstall = PlayUninstall(stage);
    return played;
}

Run Tell(const Recording& recording) {
    const Outcome outcome = OutcomeOf(recording);
    return TellRun(recording.Events, outcome);
}

rehearsal::Place PlaceOf(const Order& order) {
    return {order.Folder, order.At.empty() ? order.Folder : order.At, order.For.KernelVersion,
            order.Files};
}

} // namespace

Plan MakePlan(const Order& order) {
    rehearsal::Stage stage(PlaceOf(order));
    Plan plan;
    plan.Generation = order.For.Name;
    plan.Folder = order.For.Folder();
    plan.IsInstall = order.IsInstall;
    SetupMode = 1;
    plan.Mode = ReadConfigInt(L"INSTALL", L"MODE");
    Performance played = PlayAll(stage);
    if (order.IsInstall) {
        plan.Main = Tell(played.Install);
        plan.Rollback = Tell(played.Rollback);
        plan.Uninstall = Tell(played.Uninstall);
    } else {
        plan.Main = Tell(played.Uninstall);
    }
    AddPacketFacts(plan);
    plan.WorstCaseSeconds = WorstCaseSeconds(plan);
    return plan;
}

} // namespace plan
