#include "explain/runs.h"

#include <algorithm>
#include <charconv>
#include <list>

namespace explain {

namespace {

// More lines of one run than this are only counted, from the middle on.
constexpr std::size_t FirstKept = 20'000;
constexpr std::size_t LastKept = 10'000;
// Runs that go on side by side; an older one that has not ended by then has stopped.
constexpr std::size_t MostOpen = 4;

constexpr std::string_view Begin = "Setup: Main thread started";
constexpr std::string_view Closing = "Setup: Setup process ";
constexpr std::string_view Rollback = "Setup: Setup process fail,begin";
// One text of the program takes three lines of the file and an empty one.
constexpr std::string_view Pair = "UpdateInstall:";
constexpr int LinesOfPair = 3;

std::uint32_t Hexadecimal(std::string_view text) {
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number, 16);
    return number;
}

// The thread that the line names as one of the run's.
std::optional<std::uint32_t> ThreadNamedIn(const Entry& entry) {
    constexpr std::string_view Mark = " thread started, thread id 0x";
    const std::size_t at = entry.Text.find(Mark);
    return at == std::string::npos
               ? std::nullopt
               : std::optional(Hexadecimal(entry.Text.substr(at + Mark.size())));
}

struct OpenRun {
    Run Content;
    std::vector<std::uint32_t> Threads;

    [[nodiscard]] bool Has(std::uint32_t thread) const {
        return std::find(Threads.begin(), Threads.end(), thread) != Threads.end();
    }

    void Add(Entry entry) {
        Entries& lines = Content.Lines;
        if (lines.size() >= FirstKept + 2 * LastKept) {
            const auto from = lines.begin() + FirstKept;
            lines.erase(from, from + LastKept);
            Content.Skipped += LastKept;
        }
        lines.push_back(std::move(entry));
    }
};

class Sorter {
public:
    explicit Sorter(const std::function<void(Run&)>& take) : take_(take) {}

    void Take(const FileLine& line) {
        ++facts_.Lines;
        if (IsRestOfPair(line)) {
            pair_->Content.Lines.back().Text += "\n" + line.Text;
            return;
        }
        std::optional<Entry> entry = Understand(line);
        if (!entry) {
            return;
        }
        OpenRun& run = RunOf(*entry);
        Note(run, *entry);
        pairLines_ = entry->Text == Pair ? LinesOfPair : 0;
        pair_ = &run;
        run.Add(std::move(*entry));
    }

    LogFacts Finish() {
        while (!open_.empty()) {
            HandOver(open_.begin());
        }
        return facts_;
    }

private:
    using Place = std::list<OpenRun>::iterator;

    bool IsRestOfPair(const FileLine& line) {
        if (pairLines_ == 0 || line.HasStamp || line.When) {
            pairLines_ = 0;
            return false;
        }
        --pairLines_;
        return true;
    }

    std::optional<Entry> Understand(const FileLine& line) {
        // Another library may put something else in front of the same texts.
        const std::size_t begin = line.HasStamp ? 0 : FindKnownText(line.Text);
        if (begin == std::string::npos) {
            ++facts_.ForeignLines;
            return std::nullopt;
        }
        Entry entry{line.Number, line.When, line.Thread, line.Text.substr(begin)};
        if (std::optional<Recognised> known = Recognise(entry.Text)) {
            entry.Known = known->Line;
            entry.Values = std::move(known->Values);
        } else if (entry.Text != Pair) {
            ++facts_.ForeignLines;
        }
        return entry;
    }

    // The run that the line belongs to: the one whose thread wrote it, or the youngest.
    OpenRun& RunOf(const Entry& entry) {
        if (entry.Is(Begin)) {
            return Start(entry);
        }
        if (open_.empty()) {
            Start(entry).Content.HasBeginning = false;
        }
        for (auto place = open_.rbegin(); place != open_.rend(); ++place) {
            if (place->Has(entry.Thread)) {
                return *place;
            }
        }
        return open_.back();
    }

    OpenRun& Start(const Entry& entry) {
        for (auto place = open_.begin(); place != open_.end();) {
            const auto next = std::next(place);
            if (place->Has(entry.Thread) || place->Content.IsClosed || entry.Thread == 0) {
                place->Content.NextBegan = entry.When;
                HandOver(place);
            } else if (!place->Content.NextBegan) {
                place->Content.NextBegan = entry.When;
            }
            place = next;
        }
        if (open_.size() >= MostOpen) {
            HandOver(open_.begin());
        }
        OpenRun& run = open_.emplace_back();
        run.Content.Ordinal = ++facts_.Runs;
        run.Content.MainThread = entry.Thread;
        run.Threads = {entry.Thread};
        return run;
    }

    void Note(OpenRun& run, const Entry& entry) {
        if (const std::optional<std::uint32_t> thread = ThreadNamedIn(entry)) {
            run.Threads.push_back(*thread);
        }
        run.Content.IsClosed |= entry.Is(Closing) && !entry.Is(Rollback);
        // An older run that writes again goes on beside the younger one.
        if (&run != &open_.back() && !run.Content.IsClosed) {
            run.Content.IsMixed = true;
            open_.back().Content.IsMixed = true;
        }
    }

    void HandOver(Place place) {
        if (pair_ == &*place) {
            pairLines_ = 0;
        }
        // The texts of a pair are known once they are whole.
        for (Entry& entry : place->Content.Lines) {
            if (entry.Known == nullptr && entry.Is(Pair)) {
                Complete(entry);
            }
        }
        take_(place->Content);
        open_.erase(place);
    }

    static void Complete(Entry& entry) {
        while (entry.Text.ends_with("\n")) {
            entry.Text.pop_back();
        }
        if (std::optional<Recognised> known = Recognise(entry.Text + "\n")) {
            entry.Known = known->Line;
            entry.Values = std::move(known->Values);
        }
    }

    const std::function<void(Run&)>& take_;
    std::list<OpenRun> open_;
    LogFacts facts_;
    OpenRun* pair_ = nullptr;
    int pairLines_ = 0;
};

} // namespace

std::optional<std::uint32_t> Entry::Code() const {
    if (Known == nullptr || Values.empty() || Known->Text.find("thread") != std::string::npos) {
        return std::nullopt;
    }
    const std::string_view last = Known->Text.substr(Known->Text.rfind('%'));
    return last.starts_with("%08X") ? std::optional(Hexadecimal(Values.back())) : std::nullopt;
}

LogFacts ReadRuns(const std::wstring& path, const std::function<void(Run&)>& take) {
    LogFile file(path);
    Sorter sorter(take);
    while (std::optional<FileLine> line = file.Next()) {
        sorter.Take(std::move(*line));
    }
    return sorter.Finish();
}

} // namespace explain
