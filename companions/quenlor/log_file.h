// Appending to one log file.
#pragma once

#include <cstddef>

namespace quenlor {

// A file of this size is moved aside before a process writes its first line to it.
constexpr unsigned long MostBytes = 10UL * 1024 * 1024;

// Keeps appends of this process apart where the system's own append is not atomic, and guards what
// its threads share about the log. The same thread may take several turns at once.
class AppendTurn {
public:
    AppendTurn();
    ~AppendTurn();
    AppendTurn(const AppendTurn&) = delete;
    AppendTurn& operator=(const AppendTurn&) = delete;
};

// Appends the bytes to the file in one write, creating the file when it is missing. A file that
// another program holds is waited for, 200 milliseconds at most. False when the file cannot be
// opened, is not a plain file with one name, or took not all of the bytes; the last error tells
// why.
bool AppendToFile(const wchar_t* path, const char* bytes, std::size_t size);

// Moves the file to `asidePath`, over what is there, when it has MostBytes or more. When that does
// not work the file simply goes on growing.
void MoveAsideWhenLarge(const wchar_t* path, const wchar_t* asidePath);

} // namespace quenlor
