#include "support/log_maker.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace log_maker {

void Log::Line(const std::string& text, std::uint32_t thread) {
    constexpr int PerHour = 36'000;
    std::array<char, 64> stamp{};
    std::snprintf(stamp.data(), stamp.size(), "2026-03-%02d %02d:%02d:%02d.%d00 0x%08X ",
                  1 + tenths_ / (24 * PerHour), tenths_ / PerHour % 24, tenths_ / 600 % 60,
                  tenths_ / 10 % 60, tenths_ % 10, thread);
    bytes_ += stamp.data() + text + "\r\n";
    texts_.push_back(text);
    ++tenths_;
}

std::string Filled(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t percent = text.find('%');
        result += text.substr(0, percent);
        if (percent == std::string_view::npos) {
            break;
        }
        const std::size_t letter = text.find_first_of("sdX", percent);
        result += text[letter] == 's' ? "C:\\some.inf" : text[letter] == 'd' ? "2" : "00000002";
        text.remove_prefix(letter + 1);
    }
    return result;
}

std::string ReadFile(const std::wstring& path) {
    std::ifstream file(path.c_str(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace log_maker
