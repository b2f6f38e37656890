// What docs/log.md says of the log's lines. Its tables become these when the tool is built.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace explain {

// What a line means for the run: nothing, a failure that is passed over, its end, or that a thread
// of it has given up.
enum class Effect { Info, GoesOn, Ends, Waits };

struct KnownLine {
    std::string_view Text; // with "%s", "%d", "%08X" and the like
    Effect Means;
    std::string_view Meaning;
    std::string_view Step; // "Matching"
};

struct KnownCode {
    std::uint32_t Code;
    std::string_view Name;
    std::string_view Meaning;
};

// What a run waits for whose last line this is.
struct KnownStop {
    std::string_view Text; // how the line begins
    std::size_t Nth;       // the line counts from this occurrence on
    bool OnlyUninstall;
    std::string_view WaitsFor;
    std::string_view Mend;
};

struct Possibility {
    std::string_view What;
    std::string_view SpeaksFor;
    std::string_view Mend;
};

struct KnownCause {
    std::string_view Name; // "functions-missing"
    std::string_view Happened;
    std::string_view Mend;
    std::string_view Ask;
};

// A line that tells a cause, with one of its codes; AnyCode when the code does not matter.
struct Told {
    std::string_view Cause;
    std::string_view Text;
    std::uint32_t Code;
};
inline constexpr std::uint32_t AnyCode = 0xFFFFFFFF;

const std::vector<KnownLine>& KnownLines();
const std::vector<KnownStop>& KnownStops();
const std::vector<Possibility>& Possibilities();
const std::vector<KnownCause>& KnownCauses();
const std::vector<Told>& ToldCauses();

// Null for a code that the page does not name.
const KnownCode* CodeNamed(std::uint32_t code);

// True for a line whose code belongs to an earlier call and says nothing.
bool HasStaleCode(std::string_view text);

const KnownCause& CauseNamed(std::string_view name);

// The first step of the page's order is 1; 0 for a text that is none.
std::size_t PlaceOfStep(std::string_view step);

} // namespace explain
