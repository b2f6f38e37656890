// A run's lines by their part: what led to the end, the rollback, what came after the end.
#pragma once

#include "explain/explanation.h"

#include <span>

namespace explain {

using Part = std::span<const Entry>;

class View {
public:
    explicit View(const Run& run);

    [[nodiscard]] const Run& Whole() const { return run_; }
    // Up to the rollback or the closing line, neither included.
    [[nodiscard]] Part Main() const;
    // Behind "begin rollback"; empty without one.
    [[nodiscard]] Part Rollback() const;
    // Behind the closing line.
    [[nodiscard]] Part AfterEnd() const;

    [[nodiscard]] bool IsRolledBack() const { return rollback_ != NoLine; }
    [[nodiscard]] bool IsUninstall() const;
    [[nodiscard]] bool IsInstall() const;
    [[nodiscard]] Ending End() const;

private:
    static constexpr std::size_t NoLine = static_cast<std::size_t>(-1);

    const Run& run_;
    std::size_t rollback_ = NoLine;
    std::size_t closing_ = NoLine;
};

// The first, or last, line of the part that begins so; null when there is none.
const Entry* FirstOf(Part part, std::string_view beginning);
const Entry* LastOf(Part part, std::string_view beginning);

// Where lines of this kind follow one another though nothing else is said of them: failures below
// it do not fail the run.
bool IsPassedOver(Part part, std::size_t index);

ToldLine Tell(const Entry& entry);

} // namespace explain
