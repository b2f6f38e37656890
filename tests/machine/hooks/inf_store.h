// The INF store, for those who install from it.
#pragma once

#include "machine/state.h"

namespace machine {

// "C:\Windows\INF\".
std::wstring StoreFolder(const State& state);
// The name that the store has for an INF of this content; nothing when it has none.
std::optional<std::wstring> FindStaged(const State& state, const std::wstring& sourcePath);
// Copies an INF into the store under the next free name, or finds it there; its name.
std::wstring StageInf(State& state, const std::wstring& sourcePath);

} // namespace machine
