#include "explain/log_file.h"

#include "output/utf8.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <stdexcept>

namespace explain {

namespace {

constexpr std::size_t LongestLine = 64 * 1024;

// The number of exactly these digits.
std::optional<int> Digits(std::string_view text, std::size_t at, std::size_t count) {
    if (at + count > text.size()) {
        return std::nullopt;
    }
    int number = 0;
    const char* const begin = text.data() + at;
    const auto [end, error] = std::from_chars(begin, begin + count, number);
    const bool isWhole = error == std::errc() && end == begin + count && *begin != '-';
    return isWhole ? std::optional(number) : std::nullopt;
}

Time FromParts(int year, unsigned month, unsigned day, Time milliseconds) {
    using namespace std::chrono;
    const sys_days date =
        std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
    return duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count() + milliseconds;
}

// "0x00000A2C "
std::optional<std::uint32_t> ReadThread(std::string_view text) {
    constexpr std::size_t Length = 11;
    std::uint32_t thread = 0;
    if (text.size() < Length || !text.starts_with("0x") || text[Length - 1] != ' ') {
        return std::nullopt;
    }
    const char* const begin = text.data() + 2;
    const auto [end, error] = std::from_chars(begin, text.data() + Length - 1, thread, 16);
    return error == std::errc() && end == text.data() + Length - 1 ? std::optional(thread)
                                                                   : std::nullopt;
}

FileLine Parse(std::string_view line, std::size_t number) {
    FileLine result;
    result.Number = number;
    std::size_t end = 0;
    result.When = ReadTime(line, end);
    if (result.When && end < line.size() && line[end] == ' ') {
        if (const std::optional<std::uint32_t> thread = ReadThread(line.substr(end + 1))) {
            constexpr std::size_t ThreadLength = 12;
            result.HasStamp = true;
            result.Thread = *thread;
            end += ThreadLength;
        }
    }
    result.Text = line.substr(result.HasStamp ? end : 0);
    return result;
}

} // namespace

std::optional<Time> ReadTime(std::string_view text, std::size_t& end) {
    const std::size_t at = text.starts_with('[') ? 1 : 0;
    constexpr std::size_t Length = 19;
    if (text.size() < at + Length) {
        return std::nullopt;
    }
    const auto year = Digits(text, at, 4);
    const auto month = Digits(text, at + 5, 2);
    const auto day = Digits(text, at + 8, 2);
    const auto hour = Digits(text, at + 11, 2);
    const auto minute = Digits(text, at + 14, 2);
    const auto second = Digits(text, at + 17, 2);
    if (!year || !month || !day || !hour || !minute || !second || text[at + 13] != ':') {
        return std::nullopt;
    }
    end = at + Length;
    const bool hasFraction = end < text.size() && (text[end] == '.' || text[end] == ',');
    const auto fraction = hasFraction ? Digits(text, end + 1, 3) : std::nullopt;
    end += fraction ? std::size_t{4} : std::size_t{0};
    const Time seconds = (Time{*hour} * 60 + *minute) * 60 + *second;
    return FromParts(*year, static_cast<unsigned>(*month), static_cast<unsigned>(*day),
                     seconds * 1000 + fraction.value_or(0));
}

std::string TimeText(Time time) {
    using namespace std::chrono;
    const sys_time<milliseconds> point{milliseconds(time)};
    const sys_days date = floor<days>(point);
    const year_month_day day(date);
    const hh_mm_ss clock(floor<seconds>(point - date));
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d",
                  static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                  static_cast<unsigned>(day.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

LogFile::LogFile(const std::wstring& path) : file_(path.c_str(), std::ios::binary) {
    std::array<char, 3> mark{};
    if (!file_) {
        throw std::runtime_error(Utf8(path) + " cannot be read");
    }
    file_.read(mark.data(), mark.size());
    const std::string_view begin(mark.data(), static_cast<std::size_t>(file_.gcount()));
    isWide_ = begin.starts_with("\xFF\xFE");
    file_.clear();
    file_.seekg(isWide_ ? 2 : begin == "\xEF\xBB\xBF" ? 3 : 0);
}

// A line is cut where it is longer than any that the program writes.
bool LogFile::NextBytes(std::string& line) {
    if (!std::getline(file_, line)) {
        return false;
    }
    if (line.size() > LongestLine) {
        line.resize(LongestLine);
    }
    return true;
}

bool LogFile::NextWideLine(std::string& line) {
    std::wstring wide;
    std::array<char, 2> unit{};
    while (file_.read(unit.data(), unit.size())) {
        const auto letter = static_cast<wchar_t>(static_cast<unsigned char>(unit[0]) |
                                                 static_cast<unsigned char>(unit[1]) << 8);
        if (letter == L'\n') {
            line = Utf8(wide);
            return true;
        }
        if (wide.size() < LongestLine) {
            wide.push_back(letter);
        }
    }
    line = Utf8(wide);
    return !wide.empty();
}

std::optional<FileLine> LogFile::Next() {
    std::string line;
    if (!(isWide_ ? NextWideLine(line) : NextBytes(line))) {
        return std::nullopt;
    }
    while (line.ends_with('\r')) {
        line.pop_back();
    }
    return Parse(line, ++number_);
}

} // namespace explain
