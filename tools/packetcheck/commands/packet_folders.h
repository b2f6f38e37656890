// Which packet, and which of its generations, a command is about.
#pragma once

#include "reading/generations.h"

#include <string>

namespace commands {

// The full path of a packet's folder, without a final backslash. Throws when there is none.
std::wstring FullPath(const std::string& folder);

// The full path of a file, which need not be there.
std::wstring FullFilePath(const std::string& file);

// The generations that the packet has a folder for, the newest first.
std::vector<Generation> GenerationsOf(const std::wstring& folder);

// By name, "all" for all that the packet has a folder for; empty for the newest of these. Throws at
// an unknown name, and when the packet has no folder at all.
std::vector<Generation> ChosenGenerations(const std::wstring& folder, const std::string& name);

} // namespace commands
