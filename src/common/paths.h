// Where the program's own files and the system's folders are.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Full path of the running executable, cut to `capacity` - 1 characters; empty when the system does
// not tell.
std::wstring ExecutablePath(std::size_t capacity);

// Full path of a file or folder beside the executable; never depends on the current directory.
// Empty when the executable's path is not known.
std::wstring PathBesideExecutable(std::wstring_view name);

// True for a path that begins with a drive and a backslash or with two backslashes: what it names
// does not depend on the current directory.
bool IsAbsolutePath(std::wstring_view path);

// The Windows folder without a final backslash ("C:\Windows"), at most `capacity` - 1 characters;
// empty when the system does not tell.
std::wstring WindowsFolder(std::size_t capacity);
