// What the machine itself needs to know of an INF file: it chooses drivers by it, as Windows does.
#pragma once

#include "machine/state.h"

namespace machine {

struct InfModel {
    std::wstring Description;
    WideTexts Ids; // hardware ID first
};

struct InfContents {
    std::wstring Class;
    std::vector<InfModel> Models;
    [[nodiscard]] bool Lists(const std::wstring& id) const;
};

// Reads the INF at the simulated path; nothing when the parser refuses it.
std::optional<InfContents> ReadInf(const State& state, const std::wstring& path);

// The INFs of the store that list one of the IDs, with the ID that matched.
std::vector<DriverEntry> StoreDriversFor(const State& state, const WideTexts& ids);

} // namespace machine
