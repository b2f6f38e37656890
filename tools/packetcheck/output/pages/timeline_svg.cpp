#include "output/pages/timeline_svg.h"

#include "output/pages/html.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace output {

namespace {

using explain::Entry;
using explain::Explanation;
using explain::Time;

constexpr double Width = 960;
constexpr double Left = 96;
constexpr double Right = 14;
constexpr double Top = 22;
constexpr double Lane = 46;
constexpr double Block = 24;
constexpr double LetterWidth = 6.2;
constexpr double Minimum = 1.5;

std::string Number(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

std::string Rectangle(double x, double y, double width, double height, const std::string& rest) {
    return "<rect x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" width=\"" +
           Number(std::max(Minimum, width)) + "\" height=\"" + Number(height) + "\" " + rest;
}

std::string Label(double x, double y, const std::string& text, const std::string& rest = {}) {
    return "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" " + rest + ">" +
           html::Escaped(text) + "</text>\n";
}

std::string Titled(const std::string& shape, const std::string& title) {
    return shape + "><title>" + html::Escaped(title) + "</title></rect>\n";
}

// The next round number of milliseconds that gives at most twelve ticks.
Time TickOf(Time length) {
    constexpr Time Most = 12;
    for (Time tick = 100;; tick *= 10) {
        for (const Time times : {1, 2, 5}) {
            if (length / (tick * times) <= Most) {
                return tick * times;
            }
        }
    }
}

class Picture {
public:
    explicit Picture(const Explanation& run)
        : run_(run), begin_(*run.Began), length_(std::max<Time>(1, run.Lasted)) {
        for (const Entry& entry : run.Lines) {
            if (std::find(threads_.begin(), threads_.end(), entry.Thread) == threads_.end()) {
                threads_.push_back(entry.Thread);
            }
        }
        height_ = Top + Lane * static_cast<double>(threads_.size()) + 8;
    }

    std::string Draw() {
        std::string svg = "<svg viewBox=\"0 0 " + Number(Width) + " " + Number(height_) +
                          "\" role=\"img\" aria-label=\"Timeline of the run\">\n" + Shading;
        svg += Axis() + Rollback();
        for (std::size_t lane = 0; lane < threads_.size(); ++lane) {
            svg += LaneName(lane);
            svg += lane == 0 ? Steps() : Life(lane);
            svg += Waits(lane) + Dots(lane);
        }
        return svg + "</svg>\n";
    }

private:
    static constexpr const char* Shading =
        "<defs><pattern id=\"wait\" width=\"7\" height=\"7\" patternUnits=\"userSpaceOnUse\" "
        "patternTransform=\"rotate(45)\"><rect width=\"3\" height=\"7\" fill=\"#000\" "
        "fill-opacity=\".28\"/></pattern></defs>\n";

    [[nodiscard]] double XOf(Time time) const {
        return Left + (Width - Left - Right) * static_cast<double>(time - begin_) /
                          static_cast<double>(length_);
    }

    static double YOf(std::size_t lane) { return Top + 10 + Lane * static_cast<double>(lane); }

    [[nodiscard]] std::string Axis() const {
        std::string svg;
        const Time tick = TickOf(length_);
        for (Time at = 0; at <= length_; at += tick) {
            const double x = XOf(begin_ + at);
            svg += "<line x1=\"" + Number(x) + "\" x2=\"" + Number(x) + "\" y1=\"" +
                   Number(Top - 4) + "\" y2=\"" + Number(height_ - 4) +
                   "\" stroke=\"var(--line)\"/>\n";
            svg += Label(x, Top - 9, explain::DurationText(at),
                         at == 0 ? "class=\"soft\"" : "class=\"soft\" text-anchor=\"middle\"");
        }
        return svg;
    }

    // What lies behind the failure stands on a tinted ground.
    [[nodiscard]] std::string Rollback() const {
        for (const explain::StepTime& step : run_.Steps) {
            if (step.InRollback) {
                const double x = XOf(step.Begin);
                return Titled(Rectangle(x, Top - 4, Width - Right - x, height_ - Top,
                                        "fill=\"var(--bad)\" fill-opacity=\".1\""),
                              "rollback");
            }
        }
        return {};
    }

    [[nodiscard]] std::string LaneName(std::size_t lane) const {
        std::array<char, 24> thread{};
        std::snprintf(thread.data(), thread.size(), "0x%X", threads_[lane]);
        const std::string name = lane == 0 ? "main thread" : NameOf(threads_[lane]);
        return Label(0, YOf(lane) + 11, name) +
               Label(0, YOf(lane) + 24, thread.data(), "class=\"soft\"");
    }

    [[nodiscard]] std::string NameOf(std::uint32_t thread) const {
        for (const Entry& entry : run_.Lines) {
            if (entry.Thread == thread && entry.Is("PreInstallWorkItem")) {
                return "copying";
            }
        }
        return "watching";
    }

    [[nodiscard]] std::string Steps() const {
        std::string svg;
        for (std::size_t index = 0; index < run_.Steps.size(); ++index) {
            const explain::StepTime& step = run_.Steps[index];
            const double x = XOf(step.Begin);
            const double width = XOf(step.Begin + step.Length) - x;
            const std::string number = std::to_string(index + 1);
            svg += Titled(Rectangle(x, YOf(0), width, Block,
                                    "fill=\"" + StepColour(index) + "\" fill-opacity=\".55\""),
                          number + " " + step.Name + ", " + explain::DurationText(step.Length));
            const std::string whole = number + " " + step.Name;
            const bool hasRoom = LetterWidth * static_cast<double>(whole.size()) < width;
            if (hasRoom || width > LetterWidth * 3) {
                svg += Label(x + 3, YOf(0) + 16, hasRoom ? whole : number);
            }
        }
        return svg;
    }

    // From the thread's first line to its last.
    [[nodiscard]] std::string Life(std::size_t lane) const {
        std::optional<Time> first;
        Time last = 0;
        for (const Entry& entry : run_.Lines) {
            if (entry.Thread == threads_[lane] && entry.When) {
                first = first ? first : entry.When;
                last = *entry.When;
            }
        }
        return first ? Rectangle(XOf(*first), YOf(lane), XOf(last) - XOf(*first), Block,
                                 "fill=\"var(--accent)\" fill-opacity=\".2\"/>\n")
                     : std::string();
    }

    [[nodiscard]] std::string Waits(std::size_t lane) const {
        constexpr Time Shortest = 500;
        std::string svg;
        const Entry* before = nullptr;
        for (const Entry& entry : run_.Lines) {
            if (entry.Thread != threads_[lane] || !entry.When) {
                continue;
            }
            if (before != nullptr && *entry.When - *before->When >= Shortest) {
                const double x = XOf(*before->When);
                svg += Titled(
                    Rectangle(x, YOf(lane), XOf(*entry.When) - x, Block, "fill=\"url(#wait)\""),
                    explain::DurationText(*entry.When - *before->When) + " after " + before->Text);
            }
            before = &entry;
        }
        return svg;
    }

    [[nodiscard]] std::string Dots(std::size_t lane) const {
        constexpr std::size_t Most = 2000;
        std::string svg;
        std::size_t drawn = 0;
        for (const Entry& entry : run_.Lines) {
            if (entry.Thread != threads_[lane] || !entry.When || ++drawn > Most) {
                continue;
            }
            const bool ends = entry.Means(explain::Effect::Ends);
            const bool goesOn = entry.Means(explain::Effect::GoesOn);
            svg += "<circle cx=\"" + Number(XOf(*entry.When)) + "\" cy=\"" +
                   Number(YOf(lane) + Block + 6) + "\" r=\"" + (ends ? "4" : "2") + "\" fill=\"" +
                   (ends     ? "var(--bad)"
                    : goesOn ? "var(--doubt)"
                             : "var(--soft)") +
                   "\"><title>line " + std::to_string(entry.Number) + ": " +
                   html::Escaped(entry.Text) + "</title></circle>\n";
        }
        return svg;
    }

    const Explanation& run_;
    Time begin_;
    Time length_;
    double height_ = 0;
    std::vector<std::uint32_t> threads_;
};

} // namespace

std::string StepColour(std::size_t number) {
    static constexpr std::array<const char*, 7> Colours = {
        "#4493f8", "#3fb950", "#d29922", "#a371f7", "#db6d28", "#39c5cf", "#db61a2"};
    return Colours.at(number % Colours.size());
}

std::string TimelineSvg(const Explanation& run) {
    return run.Began && run.Lasted > 0 && !run.Lines.empty() ? Picture(run).Draw() : std::string();
}

} // namespace output
