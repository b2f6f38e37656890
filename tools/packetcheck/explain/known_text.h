// Recognising a text of the log.
#pragma once

#include "explain/log_page.h"

#include <optional>
#include <string>

namespace explain {

// A known line, and what stands in the places of its "%s", "%d", "%08X".
struct Recognised {
    const KnownLine* Line = nullptr;
    std::vector<std::string> Values;
};

// Nothing for a text that the program does not write.
std::optional<Recognised> Recognise(std::string_view text);

// Where a text of the program begins in a line that another log library wrote, with whatever it
// puts in front; npos when the line has none.
std::size_t FindKnownText(std::string_view line);

} // namespace explain
