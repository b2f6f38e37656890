// The script lines of a run, filled in.
#pragma once

#include "plan/plan.h"

namespace plan {

// The lines that the run reads, in order, with what each of them does. A stage must stand: lines
// are filled as the run fills them, with the mode and the device of that moment.
std::vector<Operation> OperationsOf(const std::vector<rehearsal::Event>& events);

// True for the reading of an operation line.
bool IsOperationLine(const rehearsal::Event& event);

// True when the section's lines are file operations.
bool IsFileSection(std::wstring_view section);

// What an effect does, as a sentence: "copies A to B".
std::wstring SentenceOf(const rehearsal::Event& effect);

} // namespace plan
