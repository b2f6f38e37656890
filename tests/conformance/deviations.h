// Where a world is known to differ from Windows, and why. Every other statement must hold there,
// and none of these may: a deviation that has gone is struck from the list.
#pragma once

#include <string>
#include <vector>

namespace conformance {

struct Deviation {
    const char* Id;
    const char* Reason;
};

// "machine", "wine8", "wine10" or "gapfilled" (under any Wine); a real Windows has none.
const std::vector<Deviation>& DeviationsOf(const std::string& world);

// The reason, or null when the statement must hold.
const char* ReasonToDiffer(const std::string& world, const std::string& id);

} // namespace conformance
