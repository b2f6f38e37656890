// Where simulated paths and registry keys really are.
#pragma once

#include "machine/state.h"

namespace machine {

// Makes the sandbox folder with what every Windows has; removes it and the registry key.
void MakeSandbox(State& state);
void RemoveSandbox(State& state);

// "C:\Windows\INF" -> "<sandbox>\C\Windows\INF". A path without a drive lies below
// "<sandbox>\none".
std::wstring RealPath(const State& state, std::wstring_view path);
void MakeFolders(const State& state, std::wstring_view folder);
void WriteBytes(const State& state, const std::wstring& path, std::string_view bytes);
void WriteText(const State& state, const std::wstring& path, std::wstring_view text);
std::string ReadBytes(const State& state, const std::wstring& path);
bool Exists(const State& state, const std::wstring& path);
void RemoveFile(const State& state, const std::wstring& path);
bool IsLocked(const State& state, const std::wstring& path);
// Full simulated paths of all files below the folder, sorted.
WideTexts FilesBelow(const State& state, const std::wstring& folder);
// Names in a real folder that match (the pattern is part of the path), in NTFS order.
std::vector<WIN32_FIND_DATAW> ListReal(const std::wstring& realPattern, DWORD& error);

// Sub-key below HKEY_CURRENT_USER that plays this predefined key; empty for others.
std::wstring RegistrySandbox(const State& state, HKEY key);
// False when something is left of it.
bool DeleteRegistryTree(HKEY root, const std::wstring& path);

} // namespace machine
