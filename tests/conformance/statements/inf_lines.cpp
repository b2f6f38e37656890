// How the INF parser takes a line apart: key, fields, text.
#include "conformance/statement.h"

#include <array>

using namespace conformance;

namespace {

constexpr DWORD Capacity = 512;

// An INF whose section [Test] has the line.
class InfWith {
public:
    InfWith(World& world, const std::string& line, const std::string& strings)
        : path_(world.Folder() + L"lines.inf") {
        world.WriteBytes(path_, "[Version]\nSignature=\"$Windows NT$\"\n[Test]\n" + line +
                                    "\n[Strings]\r\n" + strings);
        inf_ = SetupOpenInfFileW(path_.c_str(), nullptr, INF_STYLE_WIN4, nullptr);
        SetupFindFirstLineW(inf_, L"Test", nullptr, &line_);
        Untouch();
    }
    ~InfWith() { SetupCloseInfFile(inf_); }
    InfWith(const InfWith&) = delete;
    InfWith& operator=(const InfWith&) = delete;

    [[nodiscard]] HINF Get() const { return inf_; }
    INFCONTEXT& Line() { return line_; }

    // The field, and whether the size that is told without a buffer is right for it. Refused: "-".
    std::wstring Field(DWORD index) {
        DWORD size = 0;
        if (SetupGetStringFieldW(&line_, index, nullptr, 0, &size) == FALSE) {
            return L"-";
        }
        std::array<wchar_t, Capacity> text{};
        SetupGetStringFieldW(&line_, index, text.data(), Capacity, nullptr);
        const std::wstring field = text.data();
        return size == field.size() + 1 ? field : field + L"(size " + std::to_wstring(size) + L")";
    }
    std::wstring Text() {
        std::array<wchar_t, Capacity> text{};
        SetupGetLineTextW(&line_, inf_, nullptr, nullptr, text.data(), Capacity, nullptr);
        return text.data();
    }

private:
    std::wstring path_;
    HINF inf_ = INVALID_HANDLE_VALUE;
    INFCONTEXT line_{};
};

// "key:first|second|", "-" for a key that the line does not have.
std::wstring TakenApart(InfWith& inf) {
    std::wstring shown = inf.Field(0) + L":";
    const DWORD count = SetupGetFieldCount(&inf.Line());
    for (DWORD index = 1; index <= count; ++index) {
        shown += inf.Field(index) + L"|";
    }
    return shown;
}

// The fields with commas between them are the line's text.
std::wstring TextOf(const std::wstring& takenApart) {
    std::wstring text = takenApart.substr(takenApart.find(L':') + 1);
    text.pop_back();
    for (wchar_t& letter : text) {
        letter = letter == L'|' ? L',' : letter;
    }
    return text;
}

Finding Reads(World& world, const std::string& line, const std::wstring& wanted,
              const std::string& strings = "") {
    InfWith inf(world, line, strings);
    return Equal(TakenApart(inf), wanted) && Equal(inf.Text(), TextOf(wanted));
}

const std::string Words = "foo=aaa\r\nbar=bbb\r\nloop=%loop2%\r\nloop2=%loop%\r\n"
                          "per=1\r\ncent=2\r\n";

// The section with lines of their own for what is looked up.
InfWith Lookup(World& world) {
    return {world, "first=1\r\nsecond=2,3", ""};
}

} // namespace

STATEMENT(I30, "SetupGetStringFieldW SetupGetFieldCount SetupGetLineTextW", Tested,
          "GetInfSectionText", "A key and one value") {
    return Reads(world, "ab=cd", L"ab:cd|");
}

STATEMENT(I31, "SetupGetStringFieldW SetupGetFieldCount SetupGetLineTextW", Tested,
          "GetInfSectionText", "A key and several values") {
    return Reads(world, "ab=cd,ef,gh", L"ab:cd|ef|gh|");
}

STATEMENT(I32, "SetupGetStringFieldW SetupGetFieldCount SetupGetLineTextW", Tested,
          "GetInfSectionText", "A single word is key and value at once") {
    return Reads(world, "ab", L"ab:ab|");
}

STATEMENT(I33, "SetupGetStringFieldW SetupGetFieldCount SetupGetLineTextW", Tested,
          "GetInfSectionText", "Several values without a key: field 0 is refused") {
    return Reads(world, "ab,cd", L"-:ab|cd|");
}

STATEMENT(I34, "SetupGetStringFieldW SetupGetFieldCount", Tested, "-",
          "Behind a comma an equals sign is a letter as any other") {
    return Reads(world, "ab,cd=ef", L"-:ab|cd=ef|");
}

STATEMENT(I35, "SetupGetStringFieldW SetupGetFieldCount", Tested, "-", "A key may be empty") {
    return Reads(world, "=ab,cd", L":ab|cd|");
}

STATEMENT(I36, "SetupGetStringFieldW", Tested, "-",
          "A backslash at a line's end joins the next line to it") {
    return Reads(world, "ab\\\r\ncd=ef", L"abcd:ef|");
}

STATEMENT(I37, "SetupGetStringFieldW", Tested, "-",
          "Blanks and a comment behind that backslash do not matter") {
    return Reads(world, "ab \\ ;note\r\ncd=ef", L"abcd:ef|");
}

STATEMENT(I38, "SetupGetStringFieldW", Tested, "-", "Elsewhere a backslash is a letter") {
    return Reads(world, "ab \\ cd=ef", L"ab \\ cd:ef|");
}

STATEMENT(I39, "SetupGetStringFieldW", Tested, "-", "Two backslashes stay two") {
    return Reads(world, "a=b\\\\c", L"a:b\\\\c|");
}

STATEMENT(I40, "SetupGetStringFieldW", Tested, "-",
          "A backslash at the end of the section's last line joins nothing") {
    return Reads(world, "ab=cd \\\r\n", L"ab:cd|");
}

STATEMENT(I41, "SetupGetStringFieldW", Tested, "GetInfSectionText", "Quotes are taken away") {
    return Reads(world, "Ab\"Cd\"=Ef", L"AbCd:Ef|");
}

STATEMENT(I42, "SetupGetStringFieldW", Tested, "-", "Within quotes an equals sign is a letter") {
    return Reads(world, "Ab\"Cd=Ef\"", L"AbCd=Ef:AbCd=Ef|");
}

STATEMENT(I43, "SetupGetStringFieldW", Tested, "-", "So is a comma") {
    return Reads(world, "ab=cd\",\"ef", L"ab:cd,ef|");
}

STATEMENT(I44, "SetupGetStringFieldW", Tested, "-", "Quotes that nobody closes end with the line") {
    return Reads(world, "ab=cd\",ef", L"ab:cd,ef|");
}

STATEMENT(I45, "SetupGetStringFieldW", Tested, "-", "Two quotes outside of quotes are nothing") {
    return Reads(world, "ab=cd\"\"ef", L"ab:cdef|");
}

STATEMENT(I46, "SetupGetStringFieldW", Tested, "GetInfSectionText",
          "Blanks around key and values are taken away, those within stay") {
    return Reads(world, " a b = c , d ", L"a b:c|d|");
}

STATEMENT(I47, "SetupGetStringFieldW", Tested, "-", "Blanks within quotes stay") {
    return Reads(world, " a b = c ,\" d\" ", L"a b:c| d|");
}

STATEMENT(I48, "SetupGetStringFieldW SetupGetFieldCount", Tested, "GetDeviceIDFromInf",
          "Nothing between commas is an empty value") {
    return Reads(world, "a=b,,,c", L"a:b|||c|");
}

STATEMENT(I49, "SetupGetStringFieldW SetupGetFieldCount", Tested, "-",
          "Empty quotes are an empty value, a quoted blank is a blank") {
    return Reads(world, "a=b,\"\",\" \",d", L"a:b|| |d|");
}

STATEMENT(I50, "SetupGetStringFieldW SetupGetFieldCount", Tested, "-",
          "A line that begins with a comma has no key") {
    return Reads(world, ",=,,b", L"-:|=||b|");
}

STATEMENT(I51, "SetupGetStringFieldW SetupGetFieldCount", Tested, "GetInfClassName",
          "A key and nothing: one empty value") {
    return Reads(world, "a=", L"a:|");
}

STATEMENT(I52, "SetupGetStringFieldW SetupGetFieldCount", Tested, "-",
          "A line ends where the next begins") {
    return Reads(world, "a=b\r\nc", L"a:b|");
}

STATEMENT(I53, "SetupGetStringFieldW", Tested, "-", "A tab within a value stays a tab") {
    return Reads(world, "ab=cd\tef", L"ab:cd\tef|");
}

STATEMENT(I54, "SetupGetStringFieldW", Tested, "GetInfModelsText",
          "Names between percent signs are replaced from [Strings], in keys and values") {
    return Reads(world, "%foo%=%bar%", L"aaa:bbb|", Words);
}

STATEMENT(I55, "SetupGetStringFieldW", Tested, "-", "Within a text as well") {
    return Reads(world, "%foo%x=%bar%y", L"aaax:bbby|", Words);
}

STATEMENT(I56, "SetupGetStringFieldW", Tested, "-", "Two percent signs are one") {
    return Reads(world, "%% %foo%=%bar%", L"% aaa:bbb|", Words);
}

STATEMENT(I57, "SetupGetStringFieldW", Tested, "-",
          "A percent sign that nobody closes before a comment stays") {
    return Reads(world, "a=%bar;note%", L"a:%bar|", Words);
}

STATEMENT(I58, "SetupGetStringFieldW", Tested, "-", "What was put in is not replaced again") {
    return Reads(world, "loop=%loop%", L"loop:%loop2%|", Words);
}

STATEMENT(I59, "SetupGetStringFieldW", Tested, "-", "Two names side by side") {
    return Reads(world, "%per%%cent%=100", L"12:100|", Words);
}

STATEMENT(I60, "SetupGetStringFieldW", Tested, "-", "A name that [Strings] lacks stays as it is") {
    return Reads(world, "a=%nothing%,b", L"a:%nothing%|b|", Words);
}

STATEMENT(I61, "SetupGetStringFieldW", Tested, "-", "Single quotes are letters") {
    return Reads(world, "HKR,,'x',y", L"-:HKR||'x'|y|");
}

STATEMENT(I70, "SetupFindFirstLineW", Tested, "GetInfSectionText",
          "A section that is not there: 0xE0000102") {
    InfWith inf = Lookup(world);
    return Refused(SetupFindFirstLineW(inf.Get(), L"None", nullptr, &inf.Line()),
                   ERROR_LINE_NOT_FOUND);
}

STATEMENT(I71, "SetupFindFirstLineW", Tested, "-", "A key that is not there: 0xE0000102") {
    InfWith inf = Lookup(world);
    return Refused(SetupFindFirstLineW(inf.Get(), L"Test", L"none", &inf.Line()),
                   ERROR_LINE_NOT_FOUND);
}

STATEMENT(I72, "SetupFindFirstLineW", Tested, "GetInfSectionText",
          "A section is found whatever its letter case, and leaves last error 0") {
    InfWith inf = Lookup(world);
    return DoneWith(SetupFindFirstLineW(inf.Get(), L"tEST", nullptr, &inf.Line()), ERROR_SUCCESS);
}

STATEMENT(I73, "SetupFindFirstLineW", Tested, "-",
          "A key is found whatever its letter case, and leaves last error 0") {
    InfWith inf = Lookup(world);
    return DoneWith(SetupFindFirstLineW(inf.Get(), L"Test", L"SECOND", &inf.Line()),
                    ERROR_SUCCESS) &&
           Equal(inf.Field(1), L"2");
}

STATEMENT(I74, "SetupFindNextLine", Documented, "GetInfSectionText",
          "The next line is found from the one before") {
    InfWith inf = Lookup(world);
    return Done(SetupFindNextLine(&inf.Line(), &inf.Line())) && Equal(inf.Field(0), L"second");
}

STATEMENT(I75, "SetupFindNextLine", Documented, "GetInfSectionText",
          "Behind the last line: 0xE0000102") {
    InfWith inf = Lookup(world);
    SetupFindNextLine(&inf.Line(), &inf.Line());
    return Refused(SetupFindNextLine(&inf.Line(), &inf.Line()), ERROR_LINE_NOT_FOUND);
}

STATEMENT(I76, "SetupGetLineTextW", Tested, "-",
          "A line's text by its key, with the size and last error 0") {
    const InfWith inf = Lookup(world);
    std::array<wchar_t, Capacity> text{};
    DWORD size = 0;
    return DoneWith(SetupGetLineTextW(nullptr, inf.Get(), L"Test", L"second", text.data(), Capacity,
                                      &size),
                    ERROR_SUCCESS) &&
           Equal(std::wstring(text.data()), L"2,3") && Equal(size, 4U);
}

STATEMENT(I77, "SetupGetLineTextW", Tested, "-", "By a key that is not there: 0xE0000102") {
    const InfWith inf = Lookup(world);
    std::array<wchar_t, Capacity> text{};
    return Refused(
        SetupGetLineTextW(nullptr, inf.Get(), L"Test", L"none", text.data(), Capacity, nullptr),
        ERROR_LINE_NOT_FOUND);
}

STATEMENT(I78, "SetupGetLineTextW", Documented, "-",
          "A buffer that is too small for the text: 122") {
    InfWith inf = Lookup(world);
    std::array<wchar_t, 4> text{};
    return Refused(
        SetupGetLineTextW(&inf.Line(), inf.Get(), nullptr, nullptr, text.data(), 1, nullptr),
        ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(I79, "SetupGetStringFieldW", Documented, "-",
          "A buffer that is too small for the field: 122") {
    InfWith inf = Lookup(world);
    std::array<wchar_t, 4> text{};
    return Refused(SetupGetStringFieldW(&inf.Line(), 1, text.data(), 1, nullptr),
                   ERROR_INSUFFICIENT_BUFFER);
}
