#include "rules/rule_cases.h"

#include "output/utf8.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>

namespace cases {

namespace {

std::string TrimmedEnd(std::string text) {
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) {
        text.pop_back();
    }
    return text;
}

void AppendUtf8(std::string& text, unsigned code) {
    text += Utf8(std::wstring(1, static_cast<wchar_t>(code)));
}

unsigned HexAt(const std::string& text, std::size_t place, std::size_t digits) {
    return static_cast<unsigned>(std::stoul(text.substr(place, digits), nullptr, 16));
}

// "\n" and its kin.
std::string Unescaped(const std::string& text) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '\\' || index + 1 == text.size()) {
            result += text[index];
            continue;
        }
        const char kind = text[index + 1];
        if (kind == 'n') {
            result += '\n';
        } else if (kind == '0') {
            result += '\0';
        } else if (kind == 'x') {
            result += static_cast<char>(HexAt(text, index + 2, 2));
            index += 2;
        } else if (kind == 'u') {
            AppendUtf8(result, HexAt(text, index + 2, 4));
            index += 4;
        } else if (kind == '\\' && text.substr(index + 2, 1) == "n") {
            result += "\\\n";
            ++index;
        } else {
            result += text[index];
            continue;
        }
        ++index;
    }
    return result;
}

// "{text*9}"
std::string Repeated(const std::string& text) {
    const std::size_t begin = text.find('{');
    const std::size_t star = begin == std::string::npos ? begin : text.find('*', begin);
    const std::size_t end = star == std::string::npos ? star : text.find('}', star);
    // Class GUIDs stand in braces as well.
    if (end == std::string::npos || end - star > 5) {
        return text;
    }
    std::string result = text.substr(0, begin);
    const std::string part = text.substr(begin + 1, star - begin - 1);
    for (int count = std::stoi(text.substr(star + 1, end - star - 1)); count != 0; --count) {
        result += part;
    }
    return result + Repeated(text.substr(end + 1));
}

std::string Text(const std::string& written) {
    return Repeated(Unescaped(written));
}

std::vector<std::string> SplitAt(const std::string& text, const std::string& mark) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = text.find(mark); end != std::string::npos;
         end = text.find(mark, begin)) {
        parts.push_back(text.substr(begin, end - begin));
        begin = end + mark.size();
    }
    parts.push_back(text.substr(begin));
    return parts;
}

std::string& FileIn(Files& files, const std::string& name) {
    const auto found = files.find(name);
    if (found == files.end()) {
        throw std::runtime_error("there is no file " + name);
    }
    return found->second;
}

void Replace(std::string& text, const std::string& from, const std::string& to) {
    std::size_t place = text.find(from);
    if (place == std::string::npos) {
        throw std::runtime_error("'" + from + "' is not there");
    }
    while (place != std::string::npos) {
        text.replace(place, from.size(), to);
        place = text.find(from, place + to.size());
    }
}

std::string Utf16(const std::string& text, bool bigEndian) {
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const wchar_t letter : Wide(text)) {
        const auto low = static_cast<char>(letter & 0xFF);
        const auto high = static_cast<char>(letter >> 8U);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

std::string WithWindowsLineEnds(const std::string& text) {
    std::string result;
    for (const char letter : text) {
        result += letter == '\n' ? "\r\n" : std::string(1, letter);
    }
    return result;
}

std::string Encoded(const std::string& text, const std::string& encoding) {
    if (encoding == "utf-16") {
        return Utf16(WithWindowsLineEnds(text), false);
    }
    if (encoding == "utf-16-be") {
        return Utf16(WithWindowsLineEnds(text), true);
    }
    if (encoding == "utf-8-mark") {
        return "\xEF\xBB\xBF" + text;
    }
    if (encoding == "unix") {
        return text;
    }
    throw std::runtime_error("there is no encoding " + encoding);
}

template <typename Change>
void ChangeLetters(std::string& text, Change change) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [&change](unsigned char letter) { return static_cast<char>(change(letter)); });
}

// A file, or all files of a folder.
void Delete(Files& files, const std::string& name) {
    const std::size_t gone = std::erase_if(files, [&name](const auto& entry) {
        return entry.first == name || entry.first.starts_with(name + "\\");
    });
    if (gone == 0) {
        throw std::runtime_error("there is no file " + name);
    }
}

void Apply(Files& files, const std::string& change) {
    if (const auto parts = SplitAt(change, " |"); parts.size() == 3) {
        const std::string from = Text(parts[1].substr(std::min<std::size_t>(1, parts[1].size())));
        const std::string to = Text(parts[2].substr(std::min<std::size_t>(1, parts[2].size())));
        Replace(FileIn(files, parts[0]), from, to);
    } else if (const auto made = SplitAt(change, " =");
               made.size() > 1 && !change.ends_with(" =")) {
        files[Repeated(made[0])] = Text(change.substr(made[0].size() + 3));
    } else if (change.ends_with(" =")) {
        files[change.substr(0, change.size() - 2)].clear();
    } else if (const auto copy = SplitAt(change, " copy "); copy.size() == 2) {
        files[copy[0]] = FileIn(files, copy[1]);
    } else if (const auto coded = SplitAt(change, " encode "); coded.size() == 2) {
        std::string& file = FileIn(files, coded[0]);
        file = Encoded(file, coded[1]);
    } else if (change.ends_with(" delete")) {
        Delete(files, change.substr(0, change.size() - 7));
    } else if (change.ends_with(" lower")) {
        ChangeLetters(FileIn(files, change.substr(0, change.size() - 6)),
                      [](int letter) { return std::tolower(letter); });
    } else if (change.ends_with(" upper")) {
        ChangeLetters(FileIn(files, change.substr(0, change.size() - 6)),
                      [](int letter) { return std::toupper(letter); });
    } else {
        throw std::runtime_error("this is no change: " + change);
    }
}

} // namespace

std::vector<RuleCase> ReadCases(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error(path + " cannot be read");
    }
    std::vector<RuleCase> found;
    std::string rule;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        line = TrimmedEnd(line);
        const std::size_t blank = line.find(' ');
        const std::string word = line.substr(0, blank);
        const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
        if (word == "rule") {
            rule = rest;
        } else if (word == "good") {
            found.push_back({"", rest + " (line " + std::to_string(number) + ")", false, "", {}});
        } else if (word == "has" || word == "not") {
            found.push_back({rule,
                             rule + " " + word + " (line " + std::to_string(number) + ")",
                             word == "has",
                             "",
                             {rest}});
        } else if (word == "and" && rest.starts_with("none-of ")) {
            found.back().NoneOf = rest.substr(8);
        } else if (word == "and" || word == "with") {
            found.back().Changes.push_back(rest);
        } else if (!word.empty() && word.front() != '#') {
            throw std::runtime_error(path + ":" + std::to_string(number) + ": " + word);
        }
    }
    return found;
}

Files Changed(const Files& packet, const std::vector<std::string>& changes) {
    Files files = packet;
    for (const std::string& change : changes) {
        Apply(files, change);
    }
    return files;
}

} // namespace cases
