// Logs written for a test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace log_maker {

// Lines as the program's library writes them, a tenth of a second apart.
class Log {
public:
    void Line(const std::string& text, std::uint32_t thread = 0x100);
    [[nodiscard]] const std::string& Bytes() const { return bytes_; }
    [[nodiscard]] const std::vector<std::string>& Texts() const { return texts_; }

private:
    std::string bytes_;
    std::vector<std::string> texts_;
    int tenths_ = 0;
};

// A known text with something in the place of each "%s", "%d" and "%08X".
std::string Filled(std::string_view text);

std::string ReadFile(const std::wstring& path);

} // namespace log_maker
