// Where log lines go: Setup.log beside the executable, or in the user's temp folder when the
// executable lies on something that cannot be written to.
#pragma once

#include <cstddef>

namespace quenlor {

// Appends the bytes to the file in one write, creating the file when it is missing. False when the
// file cannot be opened or not everything was written; the last error tells why.
bool AppendToFile(const wchar_t* path, const char* bytes, std::size_t size);

// Appends the bytes to Setup.log. False when neither place takes them.
bool AppendToLog(const char* bytes, std::size_t size);

} // namespace quenlor
