#include "explain/known_text.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>

namespace explain {

namespace {

// A text cut at its "%s" and the like.
struct Pattern {
    const KnownLine* Line;
    std::vector<std::string_view> Pieces;
    std::size_t Letters = 0; // of all pieces
};

std::size_t EndOfPlaceholder(std::string_view text, std::size_t percent) {
    const std::size_t letter = text.find_first_of("sdX", percent);
    return letter == std::string_view::npos ? text.size() : letter + 1;
}

Pattern Cut(const KnownLine& line) {
    Pattern pattern{&line, {}};
    std::string_view rest = line.Text;
    for (std::size_t percent = rest.find('%'); percent != std::string_view::npos;
         percent = rest.find('%')) {
        pattern.Pieces.push_back(rest.substr(0, percent));
        rest.remove_prefix(EndOfPlaceholder(rest, percent));
    }
    pattern.Pieces.push_back(rest);
    for (const std::string_view piece : pattern.Pieces) {
        pattern.Letters += piece.size();
    }
    return pattern;
}

// What stands before the colon, or the first word.
std::string_view NameIn(std::string_view text) {
    return text.substr(0, text.find_first_of(": "));
}

using Patterns = std::unordered_map<std::string_view, std::vector<Pattern>>;

Patterns MakePatterns() {
    Patterns patterns;
    for (const KnownLine& line : KnownLines()) {
        patterns[NameIn(line.Text)].push_back(Cut(line));
    }
    // The one with the most letters of its own first: it says most.
    for (auto& [name, ofName] : patterns) {
        std::stable_sort(ofName.begin(), ofName.end(), [](const Pattern& one, const Pattern& two) {
            return one.Letters > two.Letters;
        });
    }
    return patterns;
}

const Patterns& AllPatterns() {
    static const Patterns patterns = MakePatterns();
    return patterns;
}

// The values between the pieces; nothing when the text is another one.
std::optional<std::vector<std::string>> Match(const Pattern& pattern, std::string_view text) {
    if (!text.starts_with(pattern.Pieces.front())) {
        return std::nullopt;
    }
    std::vector<std::string> values;
    std::size_t at = pattern.Pieces.front().size();
    for (std::size_t index = 1; index < pattern.Pieces.size(); ++index) {
        const std::string_view piece = pattern.Pieces[index];
        const bool isLast = index + 1 == pattern.Pieces.size();
        const std::size_t next = !isLast
                                     ? text.find(piece, at)
                                     : (text.size() >= at + piece.size() && text.ends_with(piece)
                                            ? text.size() - piece.size()
                                            : std::string_view::npos);
        if (next == std::string_view::npos) {
            return std::nullopt;
        }
        values.emplace_back(text.substr(at, next - at));
        at = next + piece.size();
    }
    return at == text.size() ? std::optional(std::move(values)) : std::nullopt;
}

} // namespace

std::optional<Recognised> Recognise(std::string_view text) {
    const auto ofName = AllPatterns().find(NameIn(text));
    if (ofName == AllPatterns().end()) {
        return std::nullopt;
    }
    for (const Pattern& pattern : ofName->second) {
        if (std::optional<std::vector<std::string>> values = Match(pattern, text)) {
            return Recognised{pattern.Line, std::move(*values)};
        }
    }
    return std::nullopt;
}

std::size_t FindKnownText(std::string_view line) {
    // What a library puts in front is short.
    constexpr std::size_t Longest = 160;
    const std::size_t end = std::min(line.size(), Longest);
    bool inWord = false;
    for (std::size_t at = 0; at < end; ++at) {
        const bool isLetter = std::isalpha(static_cast<unsigned char>(line[at])) != 0;
        if (isLetter && !inWord && AllPatterns().contains(NameIn(line.substr(at))) &&
            Recognise(line.substr(at))) {
            return at;
        }
        inWord = isLetter;
    }
    return std::string_view::npos;
}

} // namespace explain
