// The worked examples of our pages, as they stand there.
#pragma once

#include <string>
#include <vector>

namespace page {

// `<!-- example: name -->`, the ```ini block behind it, and the ```text block behind that.
struct Example {
    std::string Name;
    std::string Ini;
    std::vector<std::string> Expected;
};

// The text of a page in docs/, such as "setup-ini.md"; empty when the page cannot be found.
std::string Read(const std::string& name);

// The examples of the page in its order. One that lacks a block has an empty one.
std::vector<Example> ExamplesIn(const std::string& text);

// How many ```ini blocks the page has, with a name in front or without.
std::size_t CountIniBlocks(const std::string& text);

// `actual` with each line replaced by the expected one at its place when that one stands for it: a
// "*" in it stands for any number of hexadecimal digits.
std::vector<std::string> WithWildcards(std::vector<std::string> actual,
                                       const std::vector<std::string>& expected);

// The text line by line, without the line ends.
std::vector<std::string> LinesOf(const std::string& text);

} // namespace page
