// Small text helpers of the machine.
#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>

namespace machine {

std::string Utf8(std::wstring_view text);
std::wstring Wide(std::string_view utf8);
std::wstring Lower(std::wstring_view text);
std::wstring Upper(std::wstring_view text);
std::wstring Folded(std::wstring_view text); // as Windows compares names: also beyond ASCII
bool SameText(std::wstring_view left, std::wstring_view right);
bool StartsWith(std::wstring_view text, std::wstring_view start);
std::string HexText(unsigned long long value); // "0x1F"
std::wstring GuidText(const GUID& guid);       // "{4d36e978-e325-11ce-bfc1-08002be10318}"
std::wstring FileName(std::wstring_view path);
std::wstring Folder(std::wstring_view path); // with the final backslash; empty when there is none

} // namespace machine
