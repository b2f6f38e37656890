// What a run achieved, what it did not, and what it left.
#pragma once

#include "explain/view.h"

namespace explain {

// Staged INF files, then functions with their INF; in the order in which the log comes to them.
std::vector<FunctionResult> FunctionsOf(const View& view);

// Reasons not to trust a success.
std::vector<std::string> DoubtsOf(const View& view);

// What a rollback or an uninstall did not take away.
std::vector<std::string> LeftBehind(const View& view);

// Failures that did not fail the run: `why` is not among them.
std::vector<ToldLine> HarmlessLines(const View& view, const std::optional<Cause>& why);

// How many functions were there when the matching ended, and how many the packet lists; nothing
// when it counted none.
struct Counted {
    int Found = 0;
    int Listed = 0;
};
std::optional<Counted> CountedFunctions(const View& view);

std::string FileNameIn(const std::string& path);

} // namespace explain
