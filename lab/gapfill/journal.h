// The gap filler's own journal: which gaps a run went through. Its path comes from the environment
// variable GAPFILL_JOURNAL; without it nothing is written.
#pragma once

#include "system.h"

// Begins every replacement of a function: notes "call <number> <function>: <detail>" and counts.
// Ends the process when it is the call that GAPFILL_KILL asked for. Keeps the last error.
void Enter(const char* function, const std::wstring& detail = {});

// A further line about the call that was entered last. Keeps the last error.
void Note(const std::wstring& text);
