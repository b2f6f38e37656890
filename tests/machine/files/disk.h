// What a machine begins with, and its files, which are in memory.
#pragma once

#include "machine/state.h"

namespace machine {

// Puts in what every Windows has.
void FurnishDisk(State& state);

// Files of the simulated drives; folders are made as needed.
void WriteBytes(State& state, const std::wstring& path, std::string_view bytes);
void WriteText(State& state, const std::wstring& path, std::wstring_view text);
// Empty for a file that is not there.
std::string ReadBytes(const State& state, const std::wstring& path);
bool Exists(const State& state, const std::wstring& path);
// Whatever its attributes.
void RemoveFile(State& state, const std::wstring& path);
bool IsLocked(const State& state, const std::wstring& path);

} // namespace machine
