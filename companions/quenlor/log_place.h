// Where log lines go: Setup.log beside the executable, or in the user's temp folder when the
// executable lies on something that cannot be written to.
#pragma once

#include <cstddef>

namespace quenlor {

// Appends the bytes to Setup.log, all of a process's lines in one place: the first that took a
// line, until it takes no more. A log that has grown large is moved to Setup.old.log beside it
// before the process's first line there, and never again, so that no line of the process itself is
// lost. False when neither place takes the bytes.
bool AppendToLog(const char* bytes, std::size_t size);

} // namespace quenlor
