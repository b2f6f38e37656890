#include "conformance/findings.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace conformance {

namespace {

std::string ErrorText(DWORD error) {
    return "last error 0x" + Hex(error);
}

Finding RefusedWith(bool refused, std::initializer_list<DWORD> errors) {
    const DWORD error = GetLastError();
    const bool known = std::find(errors.begin(), errors.end(), error) != errors.end();
    return {refused && known, (refused ? "refused, " : "success, ") + ErrorText(error)};
}

Finding Succeeded(bool succeeded) {
    const DWORD error = GetLastError();
    return {succeeded, (succeeded ? "success, " : "refused, ") + ErrorText(error)};
}

bool IsHandle(const void* handle) {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

std::wstring Folded(std::wstring text) {
    for (wchar_t& letter : text) {
        letter = letter >= L'a' && letter <= L'z' ? static_cast<wchar_t>(letter - 32) : letter;
    }
    return text;
}

} // namespace

Finding Refused(BOOL result, std::initializer_list<DWORD> errors) {
    return RefusedWith(result == FALSE, errors);
}

Finding Refused(const void* handle, std::initializer_list<DWORD> errors) {
    return RefusedWith(!IsHandle(handle), errors);
}

Finding Done(BOOL result) {
    return Succeeded(result != FALSE);
}

Finding Done(const void* handle) {
    return Succeeded(IsHandle(handle));
}

Finding DoneWith(BOOL result, DWORD error) {
    const DWORD seen = GetLastError();
    return {result != FALSE && seen == error,
            (result != FALSE ? "success, " : "refused, ") + ErrorText(seen)};
}

Finding DoneWith(const void* handle, DWORD error) {
    return DoneWith(IsHandle(handle) ? TRUE : FALSE, error);
}

Finding Returns(long long result, long long wanted) {
    return {result == wanted, "returns 0x" + Hex(static_cast<unsigned long long>(result))};
}

Finding LastErrorIs(DWORD error) {
    const DWORD seen = GetLastError();
    return {seen == error, ErrorText(seen)};
}

Finding Equal(unsigned long long seen, unsigned long long wanted) {
    return {seen == wanted, std::to_string(seen) + " instead of " + std::to_string(wanted)};
}

Finding Equal(const std::wstring& seen, const std::wstring& wanted) {
    return {seen == wanted, "\"" + Narrow(seen) + "\""};
}

Finding Equal(const Texts& seen, const Texts& wanted) {
    std::string text = std::to_string(seen.size()) + ":";
    for (const std::wstring& entry : seen) {
        text += " " + Narrow(entry);
    }
    return {seen == wanted, text};
}

Finding SameName(const std::wstring& seen, const std::wstring& wanted) {
    return {Folded(seen) == Folded(wanted), "\"" + Narrow(seen) + "\""};
}

Finding Is(bool condition, const std::string& seen) {
    return {condition, seen};
}

Finding operator&&(const Finding& left, const Finding& right) {
    return left.Holds ? right : left;
}

Finding operator||(const Finding& left, const Finding& right) {
    return left.Holds ? left : right;
}

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t letter : text) {
        narrow += letter >= 0x20 && letter < 0x7F ? static_cast<char>(letter) : '?';
    }
    return narrow;
}

std::string Hex(unsigned long long number) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    std::string text(digits.data(), end);
    std::transform(text.begin(), text.end(), text.begin(), [](char digit) {
        return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
    });
    return text;
}

} // namespace conformance
