#include "machine/call.h"

namespace machine {

namespace {

std::string LineOf(const char* function, std::initializer_list<Argument> arguments) {
    std::string line = std::string(function) + "(";
    for (const Argument& argument : arguments) {
        line += (line.back() == '(' ? "" : ", ") + argument.Text;
    }
    return line + ")";
}

void RunActions(const std::map<std::pair<std::string, int>, std::vector<Action>>& actions,
                const char* function, int number) {
    const auto found = actions.find({function, number});
    if (found != actions.end()) {
        for (const Action& action : found->second) {
            action();
        }
    }
}

} // namespace

Argument Named(const void* handle) {
    State* state = Inside();
    return state == nullptr ? std::string() : state->Handles.Name(handle);
}

Argument Buffer(const void* buffer) {
    return buffer == nullptr ? "null" : "_";
}

Call::Call(const char* function, Counting counting, std::initializer_list<Argument> arguments,
           Telling telling)
    : state_(machine::Inside()), function_(function), lastError_(GetLastError()) {
    if (state_ == nullptr) {
        lastError_ = ERROR_NOT_READY;
        return;
    }
    const bool mayThrow = counting != Counting::Never && counting != Counting::InDestructor;
    if (mayThrow) {
        state_->Threads.Step();
        if (state_->Threads.EndedWith && state_->Threads.OnMain()) {
            throw ProcessEnded{*state_->Threads.EndedWith};
        }
    }
    Recording& record = state_->Record;
    number_ = ++record.CallCounts[function];
    RunActions(record.Before, function, number_);
    std::string line = LineOf(function, arguments);
    CountAndDecide(counting);
    if (fault_ != 0) {
        line += " -> fails " + HexText(fault_);
        lastError_ = fault_ == ErrorAsBefore ? lastError_ : fault_;
    }
    record.Entries.push_back({line, function, telling == Telling::Story});
    if (mayThrow && ++record.Steps > record.StepBudget) {
        throw StepBudgetExceeded{line};
    }
}

DWORD RandomFailures::Next() {
    if (PerMille == 0) {
        return 0;
    }
    const auto draw = [this] {
        Random = Random * 1664525U + 1013904223U;
        return Random >> 16U;
    };
    const unsigned chance = draw() % 1000;
    const unsigned choice = draw();
    return chance < PerMille ? Errors.at(choice % Errors.size()) : 0;
}

void Call::CountAndDecide(Counting counting) {
    Recording& record = state_->Record;
    const bool counts = counting == Counting::Always || counting == Counting::InDestructor ||
                        (counting == Counting::Setting && record.SettingsCount);
    if (counts) {
        const auto ordered = record.FailAt.find(++record.Counted);
        const DWORD chance = record.Chance.Next();
        fault_ = ordered != record.FailAt.end() ? ordered->second : chance;
        if (fault_ != 0) {
            record.Failed.emplace_back(function_);
        }
    }
    for (const OrderedFailure& fault : record.Faults) {
        if (fault.Function == function_ &&
            (fault.Call == number_ || (fault.AndLater && number_ > fault.Call))) {
            fault_ = fault.Error;
        }
    }
}

DWORD Call::LastErrorAfterSuccess() const {
    switch (state_->Windows.AfterSuccess) {
    case Variants::LastError::Zero:
        return ERROR_SUCCESS;
    case Variants::LastError::Stray:
        return ERROR_INSUFFICIENT_BUFFER;
    case Variants::LastError::Kept:
        break;
    }
    return lastError_;
}

Call::~Call() {
    if (state_ != nullptr && !state_->Record.After.empty()) {
        RunActions(state_->Record.After, function_, number_);
    }
    SetLastError(lastError_);
}

} // namespace machine
