// Texts of the program are UTF-16, what the tool prints and writes is UTF-8.
#pragma once

#include <string>
#include <string_view>

std::string Utf8(std::wstring_view text);
std::wstring Wide(std::string_view utf8);
