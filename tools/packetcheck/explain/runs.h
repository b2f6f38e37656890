// The runs of a log: which lines belong together.
#pragma once

#include "explain/known_text.h"
#include "explain/log_file.h"

#include <functional>

namespace explain {

struct Entry {
    std::size_t Number = 0; // of the file's line
    std::optional<Time> When;
    std::uint32_t Thread = 0;
    std::string Text{};
    const KnownLine* Known = nullptr; // null: not the program's
    std::vector<std::string> Values{};

    [[nodiscard]] bool Is(std::string_view beginning) const { return Text.starts_with(beginning); }
    // True for a line that the page says this of.
    [[nodiscard]] bool Means(Effect effect) const {
        return Known != nullptr && Known->Means == effect;
    }
    // The error code that the line gives; nothing when it gives none.
    [[nodiscard]] std::optional<std::uint32_t> Code() const;
};

using Entries = std::vector<Entry>;

struct Run {
    Entries Lines;
    std::size_t Ordinal = 1;  // in the file, from 1
    bool HasBeginning = true; // false: the file begins in the middle of it
    std::uint32_t MainThread = 0;
    bool IsClosed = false;
    // Lines left out in the middle of a very long run.
    std::size_t Skipped = 0;
    // When the next run of the file began.
    std::optional<Time> NextBegan;
    // Another run wrote while this one did.
    bool IsMixed = false;
};

struct LogFacts {
    std::size_t Runs = 0;
    std::size_t Lines = 0;        // of the file
    std::size_t ForeignLines = 0; // not the program's
};

// Reads a log and hands each run over when it is complete, in the order in which they end. However
// large the file is, little of it is held at a time. Throws when it cannot be read.
LogFacts ReadRuns(const std::wstring& path, const std::function<void(Run&)>& take);

} // namespace explain
