// The log library. Its parts come in as they are, because the library itself exports one function
// only; that one is tested through the built library beside this executable.
#include "../../companions/quenlor/log_file.cpp"
#include "../../companions/quenlor/log_line.cpp"
#include "../../companions/quenlor/log_place.cpp"

#include "support/doctest_support.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr quenlor::LineOrigin Origin = {2024, 2, 3, 4, 5, 6, 7, 0x1A2B};
const std::string Front = "2024-02-03 04:05:06.007 0x00001A2B ";

std::string Line(const std::wstring& text, std::size_t capacity = quenlor::MaxLineBytes) {
    std::vector<char> bytes(capacity);
    const std::size_t size =
        quenlor::MakeLine(Origin, text.data(), text.size(), bytes.data(), capacity);
    return std::string(bytes.data(), size);
}

// A file of its own for each test, gone afterwards.
class TemporaryFile {
public:
    TemporaryFile() {
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        GetTempFileNameW(folder, L"log", 0, path_);
    }
    ~TemporaryFile() { DeleteFileW(path_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const wchar_t* Path() const { return path_; }

private:
    wchar_t path_[MAX_PATH] = {};
};

std::string Content(const wchar_t* path) {
    const FileOwner file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     nullptr, OPEN_EXISTING, 0, nullptr));
    std::string content;
    char part[4096];
    DWORD read = 0;
    while (file && ReadFile(file.Get(), part, sizeof(part), &read, nullptr) != 0 && read > 0) {
        content.append(part, read);
    }
    return content;
}

std::vector<std::string> Lines(const std::string& content) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < content.size();) {
        const std::size_t end = content.find("\r\n", begin);
        lines.push_back(content.substr(begin, end - begin));
        begin = end == std::string::npos ? content.size() : end + 2;
    }
    return lines;
}

struct Writer {
    const wchar_t* Path;
    char Letter;
};

constexpr int LinesPerThread = 1000;

std::string WrittenBy(char letter, int number) {
    return std::string(static_cast<std::size_t>(20 + number % 300), letter);
}

DWORD WINAPI WriteLines(void* parameter) {
    const Writer& writer = *static_cast<Writer*>(parameter);
    for (int i = 0; i < LinesPerThread; ++i) {
        const std::string line = WrittenBy(writer.Letter, i) + "\r\n";
        if (!quenlor::AppendToFile(writer.Path, line.data(), line.size())) {
            return 1;
        }
    }
    return 0;
}

using WriteLogFunction = void (*)(const wchar_t* format, ...);

struct LibraryKind {
    using Handle = HMODULE;
    static Handle None() { return nullptr; }
    static void Close(Handle handle) { FreeLibrary(handle); }
};

// The built library, and the log that it writes beside this executable.
class BuiltLibrary {
public:
    BuiltLibrary()
        : library_(LoadLibraryW(L"Quenlor64.DLL")),
          WriteLog(GetFunction<WriteLogFunction>(library_.Get(), "WriteLog")) {
        quenlor::FindPath(quenlor::Places[0], path_, L"Setup.log", 10);
        quenlor::FindPath(quenlor::Places[0], oldPath_, L"Setup.old.log", 14);
        DeleteFileW(path_);
        DeleteFileW(oldPath_);
    }
    ~BuiltLibrary() {
        DeleteFileW(path_);
        DeleteFileW(oldPath_);
    }
    BuiltLibrary(const BuiltLibrary&) = delete;
    BuiltLibrary& operator=(const BuiltLibrary&) = delete;

    [[nodiscard]] const wchar_t* Path() const { return path_; }
    [[nodiscard]] const wchar_t* OldPath() const { return oldPath_; }
    [[nodiscard]] bool IsLoaded() const { return WriteLog != nullptr; }
    // What was logged, without the front part, whose length never changes.
    [[nodiscard]] std::string Logged() const {
        const std::string content = Content(path_);
        return content.size() > Front.size() ? content.substr(Front.size()) : content;
    }

private:
    Owner<LibraryKind> library_;
    wchar_t path_[MAX_PATH] = {};
    wchar_t oldPath_[MAX_PATH] = {};

public:
    const WriteLogFunction WriteLog;
};

} // namespace

TEST_CASE("A line begins with date, time to the millisecond and thread, and ends in CR LF") {
    CHECK(Line(L"UpdateInstall: done") == Front + "UpdateInstall: done\r\n");
    CHECK(Line(L"") == Front + "\r\n");
}

TEST_CASE("Line breaks and tabs inside a text are kept") {
    CHECK(Line(L"a:\n b\tc\n") == Front + "a:\n b\tc\n\r\n");
}

TEST_CASE("Texts become UTF-8, with one, two, three and four bytes to a character") {
    CHECK(Line(L"z\u00DF\u20AC\U0001F600") == Front + "z\xC3\x9F\xE2\x82\xAC\xF0\x9F\x98\x80\r\n");
}

TEST_CASE("Half a surrogate pair becomes the replacement character") {
    const std::string replacement = "\xEF\xBF\xBD";
    CHECK(Line(std::wstring(1, wchar_t{0xD83D}) + L"x") == Front + replacement + "x\r\n");
    CHECK(Line(std::wstring(1, wchar_t{0xDE00}) + L"x") == Front + replacement + "x\r\n");
    CHECK(Line(L"x" + std::wstring(1, wchar_t{0xD83D})) == Front + "x" + replacement + "\r\n");
}

TEST_CASE("A line that does not fit is cut at a whole character and still ends in CR LF") {
    const std::size_t front = Front.size();
    CHECK(Line(L"ab\u20ACc", front + 2 + 5) == Front + "ab\xE2\x82\xAC\r\n");
    CHECK(Line(L"ab\u20ACc", front + 2 + 4) == Front + "ab\r\n");
    CHECK(Line(L"ab", front + 2) == Front + "\r\n");
    CHECK(Line(L"ab", front + 1).empty());
}

TEST_CASE("The longest text fits its line, whatever its characters are") {
    const std::wstring text(quenlor::MaxTextLength, L'\u20AC');
    CHECK(Line(text).size() == Front.size() + 3 * text.size() + 2);
}

TEST_CASE("Cutting a text never leaves the first half of a surrogate pair at its end") {
    const std::wstring text = L"a\U0001F600";
    CHECK(quenlor::WholeCharacters(text.data(), 1) == 1);
    CHECK(quenlor::WholeCharacters(text.data(), 2) == 1);
    CHECK(quenlor::WholeCharacters(text.data(), 3) == 3);
    CHECK(quenlor::WholeCharacters(text.data(), 0) == 0);
}

TEST_CASE("Appending creates the file, and adds to one that is there") {
    const TemporaryFile file;
    DeleteFileW(file.Path());
    CHECK(quenlor::AppendToFile(file.Path(), "one\r\n", 5));
    CHECK(quenlor::AppendToFile(file.Path(), "two\r\n", 5));
    CHECK(Content(file.Path()) == "one\r\ntwo\r\n");
}

TEST_CASE("Appending where nothing can be written fails") {
    CHECK_FALSE(quenlor::AppendToFile(L"C:\\no such folder\\Setup.log", "x", 1));
}

TEST_CASE("A log with a second name is left alone: it may be anybody's file") {
    const TemporaryFile file;
    const std::wstring second = std::wstring(file.Path()) + L".second";
    REQUIRE(CreateHardLinkW(second.c_str(), file.Path(), nullptr) != FALSE);
    CHECK_FALSE(quenlor::AppendToFile(file.Path(), "x", 1));
    CHECK(GetLastError() == ERROR_ACCESS_DENIED);
    CHECK(Content(file.Path()).empty());
    DeleteFileW(second.c_str());
    CHECK(quenlor::AppendToFile(file.Path(), "x", 1));
}

DWORD WINAPI HoldForAWhile(void* parameter) {
    const FileOwner file(CreateFileW(static_cast<const wchar_t*>(parameter), GENERIC_READ, 0,
                                     nullptr, OPEN_EXISTING, 0, nullptr));
    Sleep(60);
    return 0;
}

TEST_CASE("A log that a scanner holds for a moment is waited for") {
    const TemporaryFile file;
    std::wstring path = file.Path();
    FileOwner held(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    REQUIRE(held);
    CHECK_FALSE(quenlor::AppendToFile(path.c_str(), "never free", 10));
    CHECK(GetLastError() == ERROR_SHARING_VIOLATION);
    held.Close();
    const KernelObjectOwner holder(
        CreateThread(nullptr, 0, HoldForAWhile, path.data(), 0, nullptr));
    Sleep(20);
    CHECK(quenlor::AppendToFile(path.c_str(), "x", 1));
    WaitForSingleObject(holder.Get(), INFINITE);
    CHECK(Content(path.c_str()) == "x");
}

TEST_CASE("Lines that several threads write at once are neither mixed nor lost") {
    const TemporaryFile file;
    Writer writers[] = {
        {file.Path(), 'a'}, {file.Path(), 'b'}, {file.Path(), 'c'}, {file.Path(), 'd'}};
    HANDLE threads[std::size(writers)];
    for (std::size_t i = 0; i < std::size(writers); ++i) {
        threads[i] = CreateThread(nullptr, 0, WriteLines, &writers[i], 0, nullptr);
    }
    WaitForMultipleObjects(static_cast<DWORD>(std::size(threads)), threads, TRUE, INFINITE);
    for (const HANDLE thread : threads) {
        DWORD result = 1;
        GetExitCodeThread(thread, &result);
        CHECK(result == 0);
        CloseHandle(thread);
    }

    std::map<char, int> next;
    int wrong = 0;
    for (const std::string& line : Lines(Content(file.Path()))) {
        const char letter = line.empty() ? '?' : line.front();
        wrong += line == WrittenBy(letter, next[letter]++) ? 0 : 1;
    }
    CHECK(wrong == 0);
    for (const Writer& writer : writers) {
        CHECK(next[writer.Letter] == LinesPerThread);
    }
}

TEST_CASE("WriteLog takes a plain %s as a wide string and leaves the last error untouched") {
    const BuiltLibrary library;
    REQUIRE(library.IsLoaded());
    SetLastError(0xE0000203);
    library.WriteLog(L"Device %s, error code 0x%08X", L"USB\\\u20AC", 0x103U);
    CHECK(GetLastError() == 0xE0000203);
    CHECK(library.Logged() == "Device USB\\\xE2\x82\xAC, error code 0x00000103\r\n");
}

TEST_CASE("WriteLog cuts a text that is longer than its buffer") {
    const BuiltLibrary library;
    REQUIRE(library.IsLoaded());
    const std::wstring longest(quenlor::MaxTextLength, L'x');
    library.WriteLog(L"%s%s", longest.c_str(), L"yyyy");
    CHECK(library.Logged() == std::string(quenlor::MaxTextLength, 'x') + "\r\n");
}

TEST_CASE("WriteLog cuts in front of a surrogate pair that does not fit as a whole") {
    const BuiltLibrary library;
    REQUIRE(library.IsLoaded());
    const std::wstring almost(quenlor::MaxTextLength - 1, L'x');
    library.WriteLog(L"%s%s", almost.c_str(), L"\U0001F600");
    CHECK(library.Logged() == std::string(quenlor::MaxTextLength - 1, 'x') + "\r\n");
}

TEST_CASE("A log that is deleted in the middle of a run begins anew in its place") {
    const BuiltLibrary library;
    library.WriteLog(L"one");
    REQUIRE(DeleteFileW(library.Path()) != FALSE);
    library.WriteLog(L"two");
    CHECK(library.Logged() == "two\r\n");
}

TEST_CASE(
    "A log that has grown large is moved aside before a process's first line, and only then") {
    const BuiltLibrary library;
    const std::string large(quenlor::MostBytes, 'o');
    REQUIRE(quenlor::AppendToFile(library.Path(), large.data(), large.size()));
    REQUIRE(quenlor::AppendToFile(library.OldPath(), "older still", 11));
    library.WriteLog(L"one");
    CHECK(library.Logged() == "one\r\n");
    CHECK(Content(library.OldPath()).size() == large.size());
    REQUIRE(quenlor::AppendToFile(library.Path(), large.data(), large.size()));
    library.WriteLog(L"two");
    CHECK(Lines(Content(library.Path())).back().ends_with(" two"));
    CHECK(Content(library.Path()).size() > large.size());
}

TEST_CASE("A log just below the limit goes on") {
    const BuiltLibrary library;
    const std::string almost(quenlor::MostBytes - 1, 'o');
    REQUIRE(quenlor::AppendToFile(library.Path(), almost.data(), almost.size()));
    library.WriteLog(L"one");
    CHECK(Content(library.Path()).size() > almost.size());
    CHECK(GetFileAttributesW(library.OldPath()) == INVALID_FILE_ATTRIBUTES);
}

TEST_CASE("A process keeps its lines in one place until that takes no more") {
    wchar_t inTemp[MAX_PATH];
    REQUIRE(quenlor::FindPath(quenlor::Places[1], inTemp, L"Setup.log", 10));
    DeleteFileW(inTemp);
    {
        const BuiltLibrary library;
        FileOwner held(
            CreateFileW(library.Path(), GENERIC_READ, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        library.WriteLog(L"one");
        held.Close();
        library.WriteLog(L"two");
        CHECK(Content(library.Path()).empty());
        CHECK(Lines(Content(inTemp)).size() == 2);
        const FileOwner heldThere(
            CreateFileW(inTemp, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        library.WriteLog(L"three");
        CHECK(library.Logged() == "three\r\n");
    }
    DeleteFileW(inTemp);
}
