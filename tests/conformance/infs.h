// INF files that checks need.
#pragma once

#include "conformance/world.h"

namespace conformance {

struct SetupClass {
    std::wstring Name;
    std::wstring Guid; // in braces
};
extern const SetupClass Ports;
extern const SetupClass Usb;

// A driver for one ID. `mark` makes its content differ from others'.
std::wstring SmallInf(const std::wstring& id, const std::wstring& mark = L"1",
                      const SetupClass& setupClass = Ports);

// Seven models lines: d0 and d1 by the ID, d2 by the compatible one, d3 by neither, d4 and d5 by
// their second ID, d6 for another processor. No provider; the maker is "One".
std::wstring SevenModels(const std::wstring& id, const std::wstring& compatibleId,
                         const SetupClass& setupClass = Ports);

} // namespace conformance
