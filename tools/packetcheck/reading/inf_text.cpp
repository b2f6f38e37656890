#include "reading/inf_text.h"

#include <algorithm>

namespace reading {

namespace {

constexpr std::wstring_view Blanks = L" \t\v\f";

std::wstring_view Trimmed(std::wstring_view text) {
    const std::size_t begin = text.find_first_not_of(Blanks);
    if (begin == std::wstring_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(Blanks) - begin + 1);
}

// The line without its comment: a semicolon inside quotes begins none.
std::wstring_view WithoutComment(std::wstring_view line) {
    bool quoted = false;
    for (std::size_t index = 0; index < line.size(); ++index) {
        if (line[index] == L'"') {
            quoted = !quoted;
        } else if (line[index] == L';' && !quoted) {
            return line.substr(0, index);
        }
    }
    return line;
}

bool IsContinued(std::wstring_view line) {
    const std::wstring_view text = Trimmed(WithoutComment(line));
    return !text.empty() && text.back() == L'\\' &&
           std::count(text.begin(), text.end(), L'"') % 2 == 0;
}

// Cuts at each `mark` outside quotes.
std::vector<std::wstring_view> SplitOutsideQuotes(std::wstring_view text, wchar_t mark) {
    std::vector<std::wstring_view> parts;
    bool quoted = false;
    std::size_t begin = 0;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == L'"') {
            quoted = !quoted;
        } else if (text[index] == mark && !quoted) {
            parts.push_back(text.substr(begin, index - begin));
            begin = index + 1;
        }
    }
    parts.push_back(text.substr(begin));
    return parts;
}

// Blanks at the ends go, then the quotation marks; a doubled one inside quotes stays once.
std::wstring Unquoted(std::wstring_view text) {
    std::wstring result;
    bool quoted = false;
    const std::wstring_view trimmed = Trimmed(text);
    for (std::size_t index = 0; index < trimmed.size(); ++index) {
        if (trimmed[index] != L'"') {
            result += trimmed[index];
        } else if (quoted && index + 1 < trimmed.size() && trimmed[index + 1] == L'"') {
            result += trimmed[index++];
        } else {
            quoted = !quoted;
        }
    }
    return result;
}

using StringKeys = std::map<std::wstring, std::wstring>;

StringKeys StringsOf(const InfText& inf) {
    StringKeys strings;
    const InfSection* const section = inf.Find(L"Strings");
    if (section != nullptr) {
        for (const InfEntry& entry : section->Entries) {
            strings.try_emplace(UpperCase(entry.Key),
                                entry.Values.empty() ? std::wstring() : entry.Values.front());
        }
    }
    return strings;
}

// A name between percent signs that is no string key stays as it stands.
std::wstring Substituted(std::wstring_view text, const StringKeys& strings) {
    std::wstring result;
    while (!text.empty()) {
        const std::size_t begin = text.find(L'%');
        const std::size_t end =
            begin == std::wstring_view::npos ? begin : text.find(L'%', begin + 1);
        if (end == std::wstring_view::npos) {
            return result.append(text);
        }
        result.append(text.substr(0, begin));
        const std::wstring_view name = text.substr(begin + 1, end - begin - 1);
        const auto known = strings.find(UpperCase(name));
        if (name.empty()) {
            result += L'%';
        } else if (known != strings.end()) {
            result += known->second;
        } else {
            result.append(text.substr(begin, end - begin + 1));
        }
        text.remove_prefix(end + 1);
    }
    return result;
}

} // namespace

InfText::InfText(const TextFile& file) {
    std::wstring whole;
    std::size_t first = 0;
    for (std::size_t index = 0; index < file.Lines.size(); ++index) {
        const std::wstring& line = file.Lines[index];
        if (whole.empty()) {
            first = index + 1;
        }
        if (IsContinued(line) && index + 1 < file.Lines.size()) {
            const std::wstring_view text = Trimmed(WithoutComment(line));
            whole.append(text.substr(0, text.size() - 1)).append(L" ");
            continue;
        }
        ReadLine(whole + line, first);
        whole.clear();
    }
    Substitute();
}

void InfText::ReadLine(const std::wstring& line, std::size_t number) {
    const std::wstring_view text = Trimmed(WithoutComment(line));
    if (text.empty()) {
        return;
    }
    if (text.front() == L'[') {
        const std::wstring name = Unquoted(text.substr(1, text.find(L']') - 1));
        const auto [known, isNew] = byName_.try_emplace(UpperCase(name), sections_.size());
        if (isNew) {
            sections_.push_back({name, number, {}});
        }
        current_ = known->second;
        inSection_ = true;
        return;
    }
    if (!inSection_) {
        return;
    }
    InfEntry entry;
    entry.Line = number;
    std::vector<std::wstring_view> sides = SplitOutsideQuotes(text, L'=');
    entry.HasKey = sides.size() > 1;
    std::wstring_view values = text;
    if (entry.HasKey) {
        entry.Key = Unquoted(sides.front());
        values.remove_prefix(sides.front().size() + 1);
    }
    for (const std::wstring_view value : SplitOutsideQuotes(values, L',')) {
        entry.Values.push_back(Unquoted(value));
    }
    sections_[current_].Entries.push_back(std::move(entry));
}

void InfText::Substitute() {
    const StringKeys strings = StringsOf(*this);
    for (InfSection& section : sections_) {
        if (EqualIgnoringCase(section.Name, L"Strings")) {
            continue;
        }
        for (InfEntry& entry : section.Entries) {
            entry.Key = Substituted(entry.Key, strings);
            for (std::wstring& value : entry.Values) {
                value = Substituted(value, strings);
            }
        }
    }
}

const InfSection* InfText::Find(std::wstring_view name) const {
    const auto known = byName_.find(UpperCase(name));
    return known == byName_.end() ? nullptr : &sections_[known->second];
}

std::vector<const InfEntry*> InfText::Entries(std::wstring_view section,
                                              std::wstring_view key) const {
    std::vector<const InfEntry*> found;
    const InfSection* const lines = Find(section);
    if (lines != nullptr) {
        for (const InfEntry& entry : lines->Entries) {
            if (entry.HasKey && EqualIgnoringCase(entry.Key, key)) {
                found.push_back(&entry);
            }
        }
    }
    return found;
}

} // namespace reading
