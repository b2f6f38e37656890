// What the machine itself needs to know of an INF file: it chooses drivers by it, as Windows does.
#pragma once

#include "machine/state.h"

namespace machine {

// A models line for this processor.
struct InfModel {
    std::wstring Manufacturer;
    std::wstring Description;
    std::wstring Section;
    WideTexts Ids; // hardware ID first
};

struct InfContents {
    std::wstring Class;
    std::wstring Provider;
    std::vector<InfModel> Models;
    // Left out of lists that a person chooses from; "*" stands for all.
    WideTexts ExcludedIds;
    // What its install sections copy.
    WideTexts Files;
    [[nodiscard]] bool Lists(const std::wstring& id) const;
};

// Reads the INF at the simulated path; nothing when the parser refuses it.
std::optional<InfContents> ReadInf(const State& state, const std::wstring& path);

// Full paths of the INFs in the folder, which ends in a backslash.
WideTexts InfsIn(const State& state, const std::wstring& folder);

// The lines of these INFs that have one of the device's IDs, best first.
std::vector<DriverEntry> FittingDrivers(const State& state, const Device& device,
                                        const WideTexts& infs);
// All their lines of the class (of any, when it is empty), in the order of the files.
std::vector<DriverEntry> DriversOfClass(const State& state, const std::wstring& className,
                                        const WideTexts& infs, bool withExcluded);

} // namespace machine
