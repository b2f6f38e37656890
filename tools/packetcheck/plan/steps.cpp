#include "plan/steps.h"

#include "plan/operations.h"

#include "install/devices/device_ids.h"

#include <algorithm>
#include <array>

namespace plan {

namespace {

using rehearsal::Deed;
using rehearsal::Event;

constexpr std::wstring_view ScriptTitle = L"Scripts of ";

// Which part of the run a log line opens.
struct Opening {
    std::wstring_view Line;
    std::wstring_view Title;
};
constexpr std::array<Opening, 12> Openings{{
    {L"Setup: Main thread started", L"Start"},
    {L"PreInstall: Inf to copy", L"Staging"},
    {L"PreInstall: Get driver packet", L"Staging"},
    {L"RefreshDeviceSet: Waiting", L"Refresh of the device tree"},
    {L"pre CompositeDeviceSetup", L"Composite devices"},
    {L"SetDeviceReinstallFlag Enter", L"Marking for reinstallation"},
    {L"ShiftDevice: Shifting device", L"Mode switch"},
    {L"AutoDeviceMatch: Auto matching", L"Matching"},
    {L"GetInfSetWithPriority", L"Installation"},
    {L"UpdateInstall: Matched device", L"Installation"},
    {L"UnInstall: ", L"Removal"},
    {L"Setup: Setup process", L"End"},
}};

std::wstring Seconds(std::uint64_t milliseconds) {
    return std::to_wstring(milliseconds / 1000) + L" s";
}

std::wstring WatchSentence(const Event& event) {
    return event.Number == 0
               ? L"gives each copy no time at all (COPYOEMTIMEOUT is missing)"
               : L"gives each copy " + Seconds(static_cast<std::uint64_t>(event.Number));
}

std::wstring OrderSentence(const Event& event) {
    return event.Text.empty() ? L"sends control code 0x00222190 to " + event.Subject
                              : L"sends the SCSI command " + event.Text + L" to " + event.Subject;
}

constexpr std::wstring_view ToUninstall = L"UnInstall: Device to uninstall ";

// An uninstall says for which IDs it looks.
std::wstring RemovalSentence(std::wstring_view line) {
    return line.starts_with(ToUninstall) ? std::wstring(L"removes every device whose ID contains ")
                                               .append(line.substr(ToUninstall.size()))
                                         : std::wstring();
}

// Sentences about what is done to devices, drivers and the store.
std::wstring DeviceSentence(const Event& event) {
    switch (event.What) {
    case Deed::DeviceRemoved:
        return event.Mode == 1
                   ? L"removes " + DeviceIdOf(event.Subject) +
                         L", attached or remembered (one of another class is marked)"
                   : L"removes every device whose ID contains " + DeviceIdOf(event.Subject);
    case Deed::DeviceMarked:
        return L"marks " + event.Subject;
    case Deed::OrderSent:
        return OrderSentence(event);
    case Deed::DriverInstalled:
        return L"installs " + event.Subject + L" with " + AfterLast(event.Object, L'\\');
    case Deed::GenericDriverChosen:
        return L"puts the composite driver of Windows on " + event.Subject;
    case Deed::InfStaged:
        return L"copies " + AfterLast(event.Subject, L'\\') + L" into the store";
    case Deed::InfUninstalled:
        return L"takes an INF of these devices out of the store";
    default:
        return {};
    }
}

std::wstring SystemSentence(const Event& event) {
    switch (event.What) {
    case Deed::Waited:
        return event.Number == 0 ? std::wstring()
                                 : L"waits " + Seconds(static_cast<std::uint64_t>(event.Number));
    case Deed::WaitedForSystem:
        return L"waits until Windows has no installation pending";
    case Deed::WatchedCopy:
        return WatchSentence(event);
    case Deed::TreeRefreshed:
        return L"has Windows look for devices anew";
    case Deed::ServicesAdjusted:
        return L"stops and numbers the maker's serial services";
    case Deed::HookSet:
        return L"starts " + AfterLast(event.Subject, L'\\');
    case Deed::WindowOpened:
        return L"opens the progress window";
    case Deed::FileDeleted:
        return L"deletes " + event.Subject;
    case Deed::Said:
        return RemovalSentence(event.Subject);
    default:
        return DeviceSentence(event);
    }
}

// Walks over a recording and sorts what it finds.
class Teller {
public:
    explicit Teller(Run& run) : run_(run) {}

    void Tell(const Event& event) {
        Open(event);
        const std::wstring sentence = SystemSentence(event);
        if (!sentence.empty()) {
            Add(sentence);
        }
        Collect(event);
    }

    void Tell(const Operation& operation) { Add(operation.Key + L": " + Summary(operation)); }

private:
    static std::wstring Summary(const Operation& operation) {
        if (!operation.Refusal.empty()) {
            return L"refused: " + operation.Refusal;
        }
        std::wstring summary;
        for (const Event& effect : operation.Effects) {
            summary += (summary.empty() ? L"" : L", ") + SentenceOf(effect);
        }
        return summary.empty() ? L"does nothing" : summary;
    }

    void Open(const Event& event) {
        if (event.What == Deed::ServicesAdjusted) {
            OpenStep(Cleaned() ? L"Serial services" : L"Cleanup");
        } else if (event.What == Deed::HookSet) {
            OpenStep(L"Hook library");
        } else if (event.What == Deed::SettingRead && event.Subject == L"OPERNUM") {
            OpenStep(std::wstring(ScriptTitle) + event.Object);
        } else if (event.What == Deed::Said) {
            const auto* const opening =
                std::find_if(Openings.begin(), Openings.end(), [&event](const Opening& row) {
                    return event.Subject.starts_with(row.Line);
                });
            if (opening != Openings.end()) {
                OpenStep(std::wstring(opening->Title));
            }
        } else if (event.What == Deed::TreeRefreshed && IsScript()) {
            OpenStep(L"Refresh of the device tree");
        }
    }

    // The services are adjusted twice: first thing in the cleanup, and after the installation.
    [[nodiscard]] bool Cleaned() const {
        return std::any_of(run_.Steps.begin(), run_.Steps.end(),
                           [](const Step& step) { return step.Title == L"Cleanup"; });
    }

    [[nodiscard]] bool IsScript() const {
        return !run_.Steps.empty() && run_.Steps.back().Title.starts_with(ScriptTitle);
    }

    void OpenStep(std::wstring title) {
        if (run_.Steps.empty() || run_.Steps.back().Title != title) {
            run_.Steps.push_back({std::move(title), {}});
        }
    }

    // The same thing for several devices or files is said once.
    void Add(const std::wstring& sentence) {
        if (run_.Steps.empty()) {
            OpenStep(L"Start");
        }
        TextList& details = run_.Steps.back().Details;
        if (!ListHolds(details, sentence)) {
            details.push_back(sentence);
        }
    }

    void Collect(const Event& event) {
        if (event.What == Deed::FileDeleted) {
            run_.Gone.Files.push_back(event.Subject);
        } else if (event.What == Deed::DeviceRemoved && event.Mode == 1) {
            AppendDistinct(run_.Gone.DeviceIds, DeviceIdOf(event.Subject));
        } else if (event.What == Deed::Said && event.Subject.starts_with(ToUninstall)) {
            run_.Gone.DeviceIds.push_back(event.Subject.substr(ToUninstall.size()));
        } else if (event.What == Deed::Waited && event.Number != 0) {
            run_.Waits.push_back({run_.Steps.empty() ? std::wstring() : run_.Steps.back().Title,
                                  static_cast<std::uint32_t>(event.Number)});
        }
    }

    Run& run_;
};

// A section without lines, or a part without anything to tell, is not worth a heading.
void DropEmptySteps(std::vector<Step>& steps) {
    std::erase_if(steps, [](const Step& step) { return step.Details.empty(); });
}

} // namespace

void TellSteps(const std::vector<Event>& events, Run& run) {
    Teller teller(run);
    auto operation = run.Operations.begin();
    for (std::size_t index = 0; index < events.size(); ++index) {
        if (operation == run.Operations.end() || index != operation->FirstEvent) {
            teller.Tell(events[index]);
            continue;
        }
        teller.Tell(*operation);
        index = operation->EndEvent - 1;
        ++operation;
    }
    DropEmptySteps(run.Steps);
}

} // namespace plan
