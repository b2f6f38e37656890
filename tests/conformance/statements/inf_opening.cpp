// Which files the INF parser takes, and what it says of the others.
#include "conformance/statement.h"

#include <array>

using namespace conformance;

namespace {

constexpr UINT LineUntouched = 0xDEADBEEF;

struct Opened {
    bool Done = false;
    DWORD Error = 0;
    UINT Line = LineUntouched;
};

Opened Open(World& world, std::string_view bytes, DWORD style = INF_STYLE_WIN4) {
    const std::wstring path = world.Folder() + L"test.inf";
    world.WriteBytes(path, bytes);
    Opened opened;
    Untouch();
    const HINF inf = SetupOpenInfFileW(path.c_str(), nullptr, style, &opened.Line);
    opened.Error = GetLastError();
    opened.Done = inf != INVALID_HANDLE_VALUE;
    if (opened.Done) {
        SetupCloseInfFile(inf);
    }
    return opened;
}

std::string Shown(const Opened& opened) {
    return (opened.Done ? "opened, last error 0x" : "refused, 0x") + Hex(opened.Error) +
           " in line " + std::to_string(opened.Line);
}

Finding Accepted(World& world, std::string_view bytes) {
    const Opened opened = Open(world, bytes);
    return Is(opened.Done, Shown(opened));
}

Finding Rejected(World& world, std::string_view bytes, DWORD error, UINT line) {
    const Opened opened = Open(world, bytes);
    return Is(!opened.Done && opened.Error == error && opened.Line == line, Shown(opened));
}

Finding NoInf(World& world, std::string_view bytes) {
    return Rejected(world, bytes, ERROR_WRONG_INF_STYLE, 0);
}

const std::string Version = "[Version]\r\nSignature=\"$Windows NT$\"\r\n";

std::string Named(std::size_t length) {
    return Version + "[" + std::string(length, 's') + "]\r\na=b\r\n";
}

// SetupGetInfInformationW on a good INF.
BOOL Information(World& world, DWORD control, void* buffer, DWORD size, DWORD* needed) {
    const std::wstring path = world.Folder() + L"good.inf";
    world.WriteBytes(path, Version);
    Untouch();
    return SetupGetInfInformationW(path.c_str(), control, static_cast<PSP_INF_INFORMATION>(buffer),
                                   size, needed);
}

DWORD InformationSize(World& world) {
    DWORD size = 0;
    Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0, &size);
    return size;
}

} // namespace

STATEMENT(I01, "SetupOpenInfFileW", Tested, "GetInfSectionText",
          "A file with nothing but the end of a line is no INF") {
    return NoInf(world, "\r\n");
}

STATEMENT(I02, "SetupOpenInfFileW", TestedNotOnWine, "-",
          "Text without any section is no INF either, rather than one with a mistake") {
    return NoInf(world, "just some text\r\nand more of it\r\n");
}

STATEMENT(I03, "SetupOpenInfFileW", Tested, "GetInfSectionText",
          "A file without a signature is no INF") {
    return NoInf(world, "[Version]\r\nClass=Ports\r\n");
}

STATEMENT(I04, "SetupOpenInfFileW", Tested, "-", "An empty signature is none") {
    return NoInf(world, "[Version]\r\nSignature=\r\n");
}

STATEMENT(I05, "SetupOpenInfFileW", Tested, "-", "A signature that nobody knows is none") {
    return NoInf(world, "[Version]\r\nSignature=\"$My Own$\"\r\n");
}

STATEMENT(I06, "SetupOpenInfFileW", Tested, "-", "The signature's letter case does not matter") {
    return Accepted(world, "[VERSION]\r\nsignature=\"$windows nt$\"\r\n");
}

STATEMENT(I07, "SetupOpenInfFileW", Tested, "-", "Fields behind the signature do not matter") {
    return Accepted(world, "[Version]\r\nSignature=\"$Chicago$\",and,more\r\n");
}

STATEMENT(I08, "SetupOpenInfFileW", Tested, "-",
          "The signature need not be the first line of its section") {
    return Accepted(world, "[Version]\r\nClass=Ports\r\nSignature=\"$Windows NT$\"\r\n");
}

STATEMENT(I09, "SetupOpenInfFileW", Tested, "-",
          "It may stand in a second section [Version]: sections of one name are one") {
    return Accepted(world, "[Version]\r\nClass=Ports\r\n[Other]\r\na=b\r\n" + Version);
}

STATEMENT(I10, "SetupOpenInfFileW", Tested, "-", "A section may have an empty name") {
    return Accepted(world, Version + "[]\r\na=b\r\n");
}

STATEMENT(I11, "SetupOpenInfFileW", Tested, "-", "A closing bracket alone is a line as any other") {
    return Accepted(world, Version + "]\r\n");
}

STATEMENT(I12, "SetupOpenInfFileW", Tested, "-", "A section's name may have 255 characters") {
    return Accepted(world, Named(255));
}

STATEMENT(I13, "SetupOpenInfFileW", Tested, "-", "256 are too many; the line is told") {
    return Rejected(world, Named(256), ERROR_SECTION_NAME_TOO_LONG, 3);
}

STATEMENT(I14, "SetupOpenInfFileW", Tested, "-",
          "A section's line without its closing bracket; the line is told") {
    return Rejected(world, Version + "[Broken\r\na=b\r\n", ERROR_BAD_SECTION_NAME_LINE, 3);
}

STATEMENT(I15, "SetupOpenInfFileW", Tested, "-",
          "Ctrl-Z ends the file, also in the middle of a section's line") {
    return Rejected(world, Version + "[Good]\r\na=b\r\n[Bro\x1Aken]\r\n",
                    ERROR_BAD_SECTION_NAME_LINE, 5);
}

STATEMENT(I16, "SetupOpenInfFileW", Tested, "-", "[Version] need not be the first section") {
    return Accepted(world, "[Other]\r\na=b\r\n" + Version);
}

STATEMENT(I17, "SetupOpenInfFileW", Tested, "-",
          "Text before the first section; the line is told") {
    return Rejected(world, "text\r\n" + Version, ERROR_EXPECTED_SECTION_NAME, 1);
}

STATEMENT(I18, "SetupOpenInfFileW", Tested, "-", "Comments count as lines") {
    return Rejected(world, "; one\r\n; two\r\ntext\r\n" + Version, ERROR_EXPECTED_SECTION_NAME, 3);
}

STATEMENT(I19, "SetupOpenInfFileW", Tested, "-", "Comments may come before the first section") {
    return Accepted(world, "; one\r\n\r\n; two\r\n" + Version);
}

STATEMENT(I20, "SetupOpenInfFileW", TestedNotOnWine, "-",
          "A zero behind a section's name does not end the file") {
    return Accepted(world, Version + std::string("[Zero]\0\r\na=b\r\n", 14));
}

STATEMENT(I21, "SetupOpenInfFileW", TestedNotOnWine, "-", "Nor does one within its name") {
    return Accepted(world, Version + std::string("[Ze\0ro]\r\na=b\r\n", 14));
}

STATEMENT(I22, "SetupOpenInfFileW", Tested, "-",
          "Two lines of text and then a section: the first") {
    return Rejected(world, "text\r\nmore\r\n[Other]\r\n" + Version, ERROR_EXPECTED_SECTION_NAME, 1);
}

STATEMENT(I25, "SetupOpenInfFileW", Tested, "-",
          "A blank line and then text: the second line is told") {
    return Rejected(world, "\r\ntext\r\n" + Version, ERROR_EXPECTED_SECTION_NAME, 2);
}

STATEMENT(I80, "SetupCloseInfFile", Tested, "-", "Closing no INF does nothing") {
    SetupCloseInfFile(nullptr);
    return LastErrorIs(Untouched);
}

STATEMENT(I81, "SetupCloseInfFile", Tested, "-", "Nor does closing INVALID_HANDLE_VALUE") {
    SetupCloseInfFile(INVALID_HANDLE_VALUE);
    return LastErrorIs(Untouched);
}

STATEMENT(I82, "SetupGetInfInformationW", Tested, "GetInfSectionText",
          "Information on a file that does not exist: 2, the size not written") {
    DWORD size = Untouched;
    const std::wstring path = world.Folder() + L"none.inf";
    return Refused(SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0,
                                           &size),
                   ERROR_FILE_NOT_FOUND) &&
           Equal(size, Untouched);
}

STATEMENT(I83, "SetupGetInfInformationW", Tested, "-",
          "A way of searching that does not exist: 87") {
    DWORD size = 0;
    return Refused(Information(world, 0xFFFF, nullptr, 0, &size), ERROR_INVALID_PARAMETER);
}

STATEMENT(I84, "SetupGetInfInformationW", Tested, "GetInfSectionText",
          "Asked for the size alone it succeeds, other than the functions of device sets") {
    DWORD size = 0;
    return Done(Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0, &size)) &&
           Is(size >= sizeof(SP_INF_INFORMATION));
}

STATEMENT(I85, "SetupGetInfInformationW", Tested, "-", "No buffer, but its whole size: 87") {
    const DWORD size = InformationSize(world);
    return Refused(Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, size, nullptr),
                   ERROR_INVALID_PARAMETER);
}

STATEMENT(I86, "SetupGetInfInformationW", Tested, "-", "No buffer, and less than its size: TRUE") {
    const DWORD size = InformationSize(world);
    return Done(Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, size - 1, nullptr));
}

STATEMENT(I87, "SetupGetInfInformationW", Tested, "-", "Nothing to write to at all: TRUE") {
    return Done(Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0, nullptr));
}

STATEMENT(I88, "SetupGetInfInformationW", Tested, "-", "A buffer that is too small: 122") {
    alignas(8) std::array<char, 4096> buffer{};
    const DWORD size = InformationSize(world);
    return Refused(
        Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, buffer.data(), size - 1, nullptr),
        ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(I89, "SetupGetInfInformationW", Tested, "GetInfSectionText",
          "A buffer of exactly the size does") {
    alignas(8) std::array<char, 4096> buffer{};
    const DWORD size = InformationSize(world);
    return Done(Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, buffer.data(), size, nullptr));
}

STATEMENT(I90, "SetupGetInfInformationW", Documented, "GetInfSectionText",
          "It tells the style, and that it is one file") {
    alignas(8) std::array<char, 4096> buffer{};
    Information(world, INFINFO_INF_NAME_IS_ABSOLUTE, buffer.data(), 4096, nullptr);
    const auto& told = *reinterpret_cast<const SP_INF_INFORMATION*>(buffer.data());
    return Equal(told.InfStyle, INF_STYLE_WIN4) && Equal(told.InfCount, 1U);
}

STATEMENT(I91, "SetupOpenInfFileW", Tested, "-",
          "A file without [Version], opened in the style of today: no INF") {
    const Opened opened = Open(world, "[Other]\r\na=b\r\n");
    return Is(!opened.Done && opened.Error == ERROR_WRONG_INF_STYLE, Shown(opened));
}

STATEMENT(I92, "SetupOpenInfFileW", Tested, "GetInfSectionText",
          "And opened in the old style: an INF") {
    const Opened opened = Open(world, "[Other]\r\na=b\r\n", INF_STYLE_OLDNT);
    return Is(opened.Done, Shown(opened));
}

STATEMENT(I93, "SetupGetInfInformationW", Tested, "-", "Information on no name: 87") {
    DWORD size = 0;
    return Refused(
        SetupGetInfInformationW(nullptr, INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0, &size),
        ERROR_INVALID_PARAMETER);
}

STATEMENT(I23, "SetupOpenInfFileW", Tested, "-",
          "Two lines of text before [Strings], then the rest: an INF") {
    return Accepted(world, "text\r\nmore\r\n[Strings]\r\na=b\r\n" + Version);
}

STATEMENT(I24, "SetupOpenInfFileW", Tested, "-",
          "Two lines of text at the beginning and [Strings] at the end: an INF") {
    return Accepted(world, "text\r\nmore\r\n" + Version + "[Strings]\r\na=b\r\n");
}
