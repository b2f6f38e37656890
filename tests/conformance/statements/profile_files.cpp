// Settings in profile files.
#include "conformance/statement.h"

#include <array>

using namespace conformance;

namespace {

constexpr std::wstring_view Content = L"[numbers]\r\n"
                                      L"minus=-1\r\nplus=+1\r\nbig=4294967297\r\nzero=00\r\n"
                                      L"mixed=42seconds\r\nword=seconds\r\nhex=0x10\r\n"
                                      L"[ spaced ]\r\nminus=-1\r\n"
                                      L"[texts]\r\n"
                                      L"a=value\r\nquoted=\"in quotes\"\r\nsingle='val'\r\n"
                                      L"blanks=   around   \r\nnovalue\r\nempty=\r\n"
                                      L"=nokey\r\n"
                                      L"[]\r\na=nameless\r\n";

std::wstring Profile(World& world) {
    return world.File(L"test.ini", Content);
}

UINT Number(World& world, const wchar_t* section, const wchar_t* key) {
    const std::wstring file = Profile(world);
    return GetPrivateProfileIntW(section, key, 77, file.c_str());
}

// The text that is read, and the length that is told when it is another.
std::wstring Text(World& world, const wchar_t* section, const wchar_t* key,
                  const wchar_t* otherwise = L"default", DWORD size = 100) {
    const std::wstring file = Profile(world);
    std::array<wchar_t, 101> text{};
    Untouch();
    const DWORD length =
        GetPrivateProfileStringW(section, key, otherwise, text.data(), size, file.c_str());
    const std::wstring read = text.data();
    return length == read.size() ? read : read + L" (length " + std::to_wstring(length) + L")";
}

Finding Reads(World& world, const wchar_t* key, unsigned long long wanted) {
    return Equal(Number(world, L"numbers", key), wanted);
}

} // namespace

STATEMENT(N01, "GetPrivateProfileIntW", Tested, "ReadConfigInt",
          "A key that is not there: the default") {
    const std::wstring file = Profile(world);
    return Equal(GetPrivateProfileIntW(L"numbers", L"none", -1, file.c_str()), UINT_MAX);
}

STATEMENT(N02, "GetPrivateProfileIntW", Tested, "ReadConfigInt", "-1 is read as such") {
    return Reads(world, L"minus", UINT_MAX);
}

STATEMENT(N03, "GetPrivateProfileIntW", Tested, "-", "A plus sign is read") {
    return Reads(world, L"plus", 1);
}

STATEMENT(N04, "GetPrivateProfileIntW", Tested, "-", "What is larger than 32 bits is cut to them") {
    return Reads(world, L"big", 1);
}

STATEMENT(N05, "GetPrivateProfileIntW", Tested, "-", "Noughts are nought") {
    return Reads(world, L"zero", 0);
}

STATEMENT(N06, "GetPrivateProfileIntW", Tested, "-", "A number ends where its digits end") {
    return Reads(world, L"mixed", 42);
}

STATEMENT(N07, "GetPrivateProfileIntW", Tested, "ReadConfigInt", "A word is 0, not the default") {
    return Reads(world, L"word", 0);
}

STATEMENT(N08, "GetPrivateProfileIntW", Tested, "-",
          "Blanks around a section's name do not matter") {
    return Equal(Number(world, L"spaced", L"minus"), UINT_MAX);
}

STATEMENT(N09, "GetPrivateProfileIntW", Unjudged, "-", "A hexadecimal number is read") {
    return Reads(world, L"hex", 16);
}

STATEMENT(N10, "GetPrivateProfileStringW", Tested, "ReadConfigString", "A value is read") {
    return Equal(Text(world, L"texts", L"a"), L"value");
}

STATEMENT(N11, "GetPrivateProfileStringW", Tested, "ReadConfigString",
          "The letter case of section and key does not matter") {
    return Equal(Text(world, L"TEXTS", L"A"), L"value");
}

STATEMENT(N12, "GetPrivateProfileStringW", Tested, "-", "Quotes around a value are taken away") {
    return Equal(Text(world, L"texts", L"quoted"), L"in quotes");
}

STATEMENT(N13, "GetPrivateProfileStringW", Tested, "-", "So are blanks around it") {
    return Equal(Text(world, L"texts", L"blanks"), L"around");
}

STATEMENT(N14, "GetPrivateProfileStringW", Unjudged, "-", "And single quotes") {
    return Equal(Text(world, L"texts", L"single"), L"val");
}

STATEMENT(N15, "GetPrivateProfileStringW", Tested, "ReadConfigString",
          "In a buffer that is too small a value is cut; the length is that of what is there") {
    return Equal(Text(world, L"texts", L"a", L"", 4), L"val");
}

STATEMENT(N16, "GetPrivateProfileStringW", Tested, "ReadConfigString",
          "A buffer of exactly the size holds the whole value") {
    return Equal(Text(world, L"texts", L"a", L"", 6), L"value");
}

STATEMENT(N17, "GetPrivateProfileStringW", Tested, "-", "A buffer of one character gets the zero") {
    return Equal(Text(world, L"texts", L"a", L"", 1), L"");
}

STATEMENT(N18, "GetPrivateProfileStringW", Tested, "ReadConfigString",
          "A section that is not there: the default") {
    return Equal(Text(world, L"none", L"a"), L"default");
}

STATEMENT(N19, "GetPrivateProfileStringW", Tested, "-",
          "Blanks at the end of the default are taken away") {
    return Equal(Text(world, L"none", L"a", L"default  "), L"default");
}

STATEMENT(N20, "GetPrivateProfileStringW", Tested, "-", "No default: an empty text") {
    return Equal(Text(world, L"none", L"a", nullptr), L"");
}

STATEMENT(N21, "GetPrivateProfileStringW", Tested, "-", "A line without an equals sign is no key") {
    return Equal(Text(world, L"texts", L"novalue"), L"default");
}

STATEMENT(N22, "GetPrivateProfileStringW", Unjudged, "ReadConfigString",
          "A key with an empty value is there: not the default") {
    return Equal(Text(world, L"texts", L"empty"), L"");
}

STATEMENT(N23, "GetPrivateProfileStringW", TestedNotOnWine, "-",
          "An empty section name gives the section with the empty name") {
    return Equal(Text(world, L"", L"a"), L"nameless");
}

STATEMENT(N24, "GetPrivateProfileStringW", Tested, "-", "An empty key gives the line without one") {
    return Equal(Text(world, L"texts", L""), L"nokey");
}

STATEMENT(N25, "GetPrivateProfileStringW", TestedNotOnWine, "-",
          "A key that is not there leaves the last error as it was (Windows 7: 2)") {
    Text(world, L"texts", L"none");
    return LastErrorIs(Untouched) || LastErrorIs(ERROR_FILE_NOT_FOUND);
}

STATEMENT(N26, "GetPrivateProfileStringW", Tested, "ReadConfigString",
          "A file that does not exist: the default") {
    std::array<wchar_t, 100> text{};
    const std::wstring file = world.Folder() + L"none.ini";
    GetPrivateProfileStringW(L"texts", L"a", L"default", text.data(), 100, file.c_str());
    return Equal(std::wstring(text.data()), L"default");
}
