#include "plan/operations.h"

#include "common/run_state.h"
#include "config/operation_variables.h"
#include "operations/operation_section.h"
#include "operations/template_line.h"
#include "rehearsal/stage.h"

#include <algorithm>

namespace plan {

namespace {

using rehearsal::Deed;
using rehearsal::Event;

std::wstring Filled(const Event& reading) {
    SetupMode = reading.Mode;
    MatchedDeviceBaseId = reading.BaseId;
    TextList parameters;
    const bool known = IsFileSection(reading.Object)
                           ? ExpandFileOperVariables(reading.Text, parameters)
                           : ExpandRegeditVariables(reading.Text, parameters);
    return known && !MayBeCut(reading.Text) ? FillTemplate(reading.Text, parameters).Text
                                            : std::wstring();
}

bool IsEffect(const Event& event) {
    switch (event.What) {
    case Deed::FileDeleted:
    case Deed::FileMade:
    case Deed::FolderMade:
    case Deed::FileCopied:
    case Deed::ValueSet:
    case Deed::ValueDeleted:
    case Deed::KeyDeleted:
    case Deed::ValueRead:
        return true;
    default:
        return false;
    }
}

bool IsRefusal(const Event& event) {
    return event.What == Deed::Said && (event.Subject.starts_with(L"ExecutSingleFileOper: ") ||
                                        event.Subject.starts_with(L"ExecuteSingleRegeditReq: "));
}

// A line's own variables are read while it is carried out.
bool BelongsToLine(const Event& event) {
    return event.What == Deed::SettingRead &&
           (event.Object == L"USER_ENV_PARA" || event.Object == L"USERSETTING");
}

Operation ReadOperation(const std::vector<Event>& events, std::size_t reading) {
    const Event& line = events[reading];
    Operation operation{.Section = line.Source,
                        .Key = line.Subject,
                        .Line = line.Text,
                        .Filled = Filled(line),
                        .FirstEvent = reading,
                        .EndEvent = reading + 1};
    for (std::size_t& next = operation.EndEvent; next < events.size(); ++next) {
        const Event& event = events[next];
        if (IsEffect(event)) {
            operation.Effects.push_back(event);
        } else if (IsRefusal(event)) {
            operation.Refusal = event.Subject;
        } else if (!BelongsToLine(event)) {
            break;
        }
    }
    return operation;
}

std::wstring RegistryPlace(const Event& effect) {
    return effect.Subject + L", value \"" + effect.Object + L"\"";
}

} // namespace

bool IsFileSection(std::wstring_view section) {
    return section == L"PRE_FILE_OPER" || section == L"POST_FILE_OPER";
}

bool IsOperationLine(const Event& event) {
    return event.What == Deed::SettingRead && event.Subject.starts_with(L"OPER") &&
           event.Subject != L"OPERNUM" && !event.Text.empty();
}

std::vector<Operation> OperationsOf(const std::vector<Event>& events) {
    std::vector<Operation> operations;
    for (std::size_t index = 0; index < events.size(); ++index) {
        if (IsOperationLine(events[index])) {
            operations.push_back(ReadOperation(events, index));
        }
    }
    return operations;
}

std::wstring SentenceOf(const Event& effect) {
    switch (effect.What) {
    case Deed::FileDeleted:
        return L"deletes " + effect.Subject;
    case Deed::FileMade:
        return L"makes the empty file " + effect.Subject;
    case Deed::FolderMade:
        return L"makes the folder " + effect.Subject;
    case Deed::FileCopied:
        return L"copies " + effect.Subject + L" to " + effect.Object;
    case Deed::ValueSet:
        return L"sets " + RegistryPlace(effect) + L" to \"" + effect.Text + L"\" (type " +
               std::to_wstring(effect.Number) + L")";
    case Deed::ValueDeleted:
        return L"deletes " + RegistryPlace(effect);
    case Deed::KeyDeleted:
        return L"deletes the key " + effect.Subject;
    case Deed::ValueRead:
        return L"reads " + RegistryPlace(effect);
    default:
        return {};
    }
}

} // namespace plan
