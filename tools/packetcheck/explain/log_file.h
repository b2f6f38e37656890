// A log as a file: read line by line, whatever its size.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace explain {

// Milliseconds of local time since 1970.
using Time = std::int64_t;

struct FileLine {
    std::size_t Number = 0; // from 1
    bool HasStamp = false;  // date, time and thread in front, as the program's own library writes
    std::optional<Time> When;
    std::uint32_t Thread = 0;
    std::string Text; // UTF-8, without what stands in front
};

class LogFile {
public:
    // Throws std::runtime_error when the file cannot be read.
    explicit LogFile(const std::wstring& path);

    // The next line; nothing at the end.
    std::optional<FileLine> Next();

private:
    bool NextBytes(std::string& line);
    bool NextWideLine(std::string& line);

    std::ifstream file_;
    bool isWide_ = false; // UTF-16 little endian
    std::size_t number_ = 0;
};

// A date and time at the beginning of a text, "2026-03-14 09:26:53.589", with or without a bracket
// in front and milliseconds behind; `end` is set behind it.
std::optional<Time> ReadTime(std::string_view text, std::size_t& end);

// "2026-03-14 09:26:53"
std::string TimeText(Time time);

} // namespace explain
