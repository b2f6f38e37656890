#include "docs/page.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>

namespace page {

namespace {

constexpr std::string_view Mark = "<!-- example: ";
constexpr std::string_view IniFence = "```ini\n";
constexpr std::string_view TextFence = "```text\n";

// The block that begins with `fence` at or behind `position`, up to `limit`.
std::string Block(const std::string& text, std::string_view fence, std::size_t position,
                  std::size_t limit) {
    std::size_t begin = text.find(fence, position);
    if (begin >= limit) {
        return {};
    }
    begin += fence.size();
    return text.substr(begin, text.find("```", begin) - begin);
}

bool StandsFor(const std::string& expected, const std::string& actual) {
    const std::size_t star = expected.find('*');
    if (star == std::string::npos) {
        return false;
    }
    const std::string tail = expected.substr(star + 1);
    if (actual.size() < star + tail.size() || actual.compare(0, star, expected, 0, star) != 0 ||
        !actual.ends_with(tail)) {
        return false;
    }
    return std::all_of(actual.begin() + static_cast<std::ptrdiff_t>(star),
                       actual.end() - static_cast<std::ptrdiff_t>(tail.size()),
                       [](unsigned char digit) { return std::isxdigit(digit) != 0; });
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

std::string Read(const std::string& name) {
    const std::string path = std::string(PAGES_FOLDER) + "/" + name;
    std::string text = ReadFile(path);
    if (text.empty()) {
        // Built on Linux, run under Wine, with another drive as the current one.
        text = ReadFile("Z:" + path);
    }
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

std::vector<Example> ExamplesIn(const std::string& text) {
    std::vector<Example> examples;
    std::size_t mark = text.find(Mark);
    while (mark != std::string::npos) {
        const std::size_t name = mark + Mark.size();
        const std::size_t next = text.find(Mark, name);
        const std::size_t ini = text.find(IniFence, name);
        examples.push_back({text.substr(name, text.find(" -->", name) - name),
                            Block(text, IniFence, name, next),
                            LinesOf(Block(text, TextFence, ini, next))});
        mark = next;
    }
    return examples;
}

std::size_t CountIniBlocks(const std::string& text) {
    std::size_t count = 0;
    for (std::size_t position = text.find(IniFence); position != std::string::npos;
         position = text.find(IniFence, position + 1)) {
        ++count;
    }
    return count;
}

std::vector<std::string> WithWildcards(std::vector<std::string> actual,
                                       const std::vector<std::string>& expected) {
    for (std::size_t line = 0; line < std::min(actual.size(), expected.size()); ++line) {
        if (StandsFor(expected[line], actual[line])) {
            actual[line] = expected[line];
        }
    }
    return actual;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

} // namespace page
