#include "journal.h"

#include "test_aids.h"

#include <atomic>

namespace {

std::atomic<unsigned> Calls = 0;

std::wstring JournalPath() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetEnvironmentVariableW(L"GAPFILL_JOURNAL", path, MAX_PATH);
    return length < MAX_PATH ? std::wstring(path, length) : std::wstring();
}

std::string Utf8(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    const int needed =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), needed, nullptr, nullptr);
    return result;
}

// Opened for each line and written at once: the process may be killed behind any of them.
void Append(const std::wstring& line) {
    const std::wstring path = JournalPath();
    if (path.empty()) {
        return;
    }
    const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    const std::string bytes = Utf8(line + L"\n");
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

} // namespace

void Enter(const char* function, const std::wstring& detail) {
    const LastErrorKeeper keeper;
    const unsigned number = ++Calls;
    Append(L"call " + std::to_wstring(number) + L" " +
           std::wstring(function, function + std::char_traits<char>::length(function)) +
           (detail.empty() ? L"" : L": " + detail));
    KillIfAsked(number);
}

void Note(const std::wstring& text) {
    const LastErrorKeeper keeper;
    Append(L"  " + text);
}
