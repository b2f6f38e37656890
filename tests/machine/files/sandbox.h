// What a machine begins with and works on: files in memory, registry keys below one of its own.
#pragma once

#include "machine/state.h"

namespace machine {

// Puts in what every Windows has; removes the registry key.
void MakeSandbox(State& state);
void RemoveSandbox(State& state);

// Files of the simulated drives; folders are made as needed.
void WriteBytes(State& state, const std::wstring& path, std::string_view bytes);
void WriteText(State& state, const std::wstring& path, std::wstring_view text);
// Empty for a file that is not there.
std::string ReadBytes(const State& state, const std::wstring& path);
bool Exists(const State& state, const std::wstring& path);
// Whatever its attributes.
void RemoveFile(State& state, const std::wstring& path);
bool IsLocked(const State& state, const std::wstring& path);

// Sub-key below HKEY_CURRENT_USER that plays this predefined key; empty for others.
std::wstring RegistrySandbox(State& state, HKEY key);
// False when something is left of it.
bool DeleteRegistryTree(HKEY root, const std::wstring& path);

} // namespace machine
