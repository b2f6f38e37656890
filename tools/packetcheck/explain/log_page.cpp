#include "explain/log_page.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace explain {

namespace {

#define NOTHING(...)
#define LINE(text, means, meaning, step) {text, Effect::means, meaning, step},
#define CODE NOTHING
#define STALE NOTHING
#define STOP NOTHING
#define POSSIBILITY NOTHING
#define CAUSE NOTHING
#define TOLD NOTHING
const std::vector<KnownLine> Lines = {
#include "generated/log_tables.inc"
};
#undef LINE
#undef CODE
#define LINE NOTHING
#define CODE(code, name, meaning) {code, name, meaning},
const std::vector<KnownCode> Codes = {
#include "generated/log_tables.inc"
};
#undef CODE
#undef STALE
#define CODE NOTHING
#define STALE(text) text,
const std::vector<std::string_view> Stale = {
#include "generated/log_tables.inc"
};
#undef STALE
#undef STOP
#define STALE NOTHING
#define STOP(text, nth, onlyUninstall, waitsFor, mend) {text, nth, onlyUninstall, waitsFor, mend},
const std::vector<KnownStop> Stops = {
#include "generated/log_tables.inc"
};
#undef STOP
#undef POSSIBILITY
#define STOP NOTHING
#define POSSIBILITY(what, speaksFor, mend) {what, speaksFor, mend},
const std::vector<Possibility> FourPossibilities = {
#include "generated/log_tables.inc"
};
#undef POSSIBILITY
#undef CAUSE
#define POSSIBILITY NOTHING
#define CAUSE(name, happened, mend, ask) {name, happened, mend, ask},
const std::vector<KnownCause> Causes = {
#include "generated/log_tables.inc"
};
#undef CAUSE
#undef TOLD
#define CAUSE NOTHING
#define TOLD(cause, text, code) {cause, text, code},
const std::vector<Told> TellingLines = {
#include "generated/log_tables.inc"
};
#undef LINE
#undef CODE
#undef STALE
#undef STOP
#undef POSSIBILITY
#undef CAUSE
#undef TOLD
#undef NOTHING

constexpr std::string_view Dots = "...";

} // namespace

const std::vector<KnownLine>& KnownLines() {
    return Lines;
}

const std::vector<KnownStop>& KnownStops() {
    return Stops;
}

const std::vector<Possibility>& Possibilities() {
    return FourPossibilities;
}

const std::vector<KnownCause>& KnownCauses() {
    return Causes;
}

const std::vector<Told>& ToldCauses() {
    return TellingLines;
}

const KnownCode* CodeNamed(std::uint32_t code) {
    const auto found = std::find_if(Codes.begin(), Codes.end(),
                                    [code](const KnownCode& known) { return known.Code == code; });
    return found == Codes.end() ? nullptr : &*found;
}

bool HasStaleCode(std::string_view text) {
    return std::any_of(Stale.begin(), Stale.end(), [text](std::string_view stale) {
        if (stale.starts_with(Dots)) {
            return text.find(stale.substr(Dots.size() + 1)) != std::string_view::npos;
        }
        return text.starts_with(stale.substr(0, stale.find(Dots)));
    });
}

const KnownCause& CauseNamed(std::string_view name) {
    const auto found = std::find_if(Causes.begin(), Causes.end(),
                                    [name](const KnownCause& cause) { return cause.Name == name; });
    if (found == Causes.end()) {
        throw std::logic_error("the page has no cause " + std::string(name));
    }
    return *found;
}

std::size_t PlaceOfStep(std::string_view step) {
    std::vector<std::string_view> steps;
    for (const KnownLine& line : Lines) {
        if (std::find(steps.begin(), steps.end(), line.Step) == steps.end()) {
            steps.push_back(line.Step);
        }
    }
    const auto found = std::find(steps.begin(), steps.end(), step);
    return found == steps.end() ? 0 : static_cast<std::size_t>(found - steps.begin()) + 1;
}

} // namespace explain
