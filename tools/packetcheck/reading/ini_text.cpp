#include "reading/ini_text.h"

#include <algorithm>

namespace reading {

namespace {

std::wstring_view Trimmed(std::wstring_view text) {
    constexpr std::wstring_view Blanks = L" \t\v\f";
    const std::size_t begin = text.find_first_not_of(Blanks);
    if (begin == std::wstring_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(Blanks) - begin + 1);
}

std::wstring_view Unquoted(std::wstring_view value) {
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == L'"' || value.front() == L'\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

template <typename Named, typename Member>
const Named* FindByName(const std::vector<Named>& list, Member name, std::wstring_view wanted) {
    const auto found = std::find_if(list.begin(), list.end(), [&](const Named& entry) {
        return EqualIgnoringCase(entry.*name, wanted);
    });
    return found == list.end() ? nullptr : &*found;
}

void ReadLine(IniText& ini, std::wstring_view line, std::size_t number) {
    const std::wstring_view text = Trimmed(line);
    if (text.empty() || text.front() == L';') {
        return;
    }
    if (text.front() == L'[') {
        const std::size_t end = text.find(L']');
        ini.Sections.push_back({std::wstring(Trimmed(text.substr(1, end - 1))), number, {}});
        return;
    }
    if (ini.Sections.empty()) {
        return;
    }
    const std::size_t equals = text.find(L'=');
    if (equals != std::wstring_view::npos) {
        ini.Sections.back().Entries.push_back(
            {std::wstring(Trimmed(text.substr(0, equals))),
             std::wstring(Unquoted(Trimmed(text.substr(equals + 1)))), number});
    }
}

} // namespace

const IniEntry* IniSection::Find(std::wstring_view key) const {
    return FindByName(Entries, &IniEntry::Key, key);
}

const IniSection* IniText::Find(std::wstring_view name) const {
    return FindByName(Sections, &IniSection::Name, name);
}

std::size_t IniText::LineOf(std::wstring_view section, std::wstring_view key) const {
    const IniSection* const found = Find(section);
    const IniEntry* const entry = found == nullptr ? nullptr : found->Find(key);
    return entry == nullptr ? 0 : entry->Line;
}

IniText IniFrom(TextFile file) {
    IniText ini;
    for (std::size_t index = 0; index < file.Lines.size(); ++index) {
        ReadLine(ini, file.Lines[index], index + 1);
    }
    ini.File = std::move(file);
    return ini;
}

IniText ReadIni(const std::wstring& path) {
    return IniFrom(ReadTextFile(path));
}

} // namespace reading
