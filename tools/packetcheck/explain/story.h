// Where the time of a run went.
#pragma once

#include "explain/view.h"

namespace explain {

// The run's parts in order, with how long each took.
std::vector<StepTime> StepsOf(const View& view);

// The longest stretches without a line, the longest first; shorter ones than a second are none.
std::vector<Gap> GapsOf(const View& view);

// What a thread waits for behind a line; null when the page names no wait there.
const KnownStop* WaitBehind(const View& view, const Entry& entry);

// Nothing for a run with a closing line.
std::optional<Stop> StopOf(const View& view);

// Where in the sequence the file's line stands: "Matching, 23 s after the start; before it: ..."
std::string PlaceOf(const View& view, const std::vector<StepTime>& steps, std::size_t line);

} // namespace explain
