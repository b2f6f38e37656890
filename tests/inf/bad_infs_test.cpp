// Files that are no INF, or hardly one: every reading ends, and says whether it could read.
#include "inf/driver_files.h"
#include "inf/inf_files.h"
#include "inf/models.h"
#include "support/doctest_support.h"

#include <random>

using namespace machine;

namespace {

// Reads all that the program wants of an INF. The readings may fail or find nothing; they must end,
// leave nothing open and log nothing but the two known lines.
void ReadAll(Machine& m, const std::wstring& path) {
    InfLineList lines;
    TextList texts;
    DriverFileList files;
    std::wstring text;
    GetInfSectionText(path, L"Version", lines);
    GetInfModelsText(path, lines);
    GetDeviceIDFromInf(path, texts);
    GetInfClassName(path, text);
    try {
        GetInstallSectionsFromInf(path, texts);
        GetDestinationDir(path, L"DrvCopy", text);
        GetDriverFileList(path, files);
    } catch (const ProcessEnded& end) {
        CHECK(end.Status == 0xC0000417);
    }
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    for (const std::string& line : m.Log()) {
        const bool known =
            line.starts_with("GetInfSectionText: Get inf D:\\Packet\\WIN7\\a.inf information "
                             "fail,error code 0x") ||
            line.starts_with("GetInfSectionText: Open inf D:\\Packet\\WIN7\\a.inf fail,error "
                             "code 0x");
        CHECK_MESSAGE(known, line);
    }
}

} // namespace

TEST_CASE("A file that is no INF cannot be read, which is logged") {
    Machine m;
    for (const char* bytes : {"", "MZ\x90", "no section here\r\n", "[Version\r\n", "\xFF\xFE"}) {
        m.ForgetJournal();
        m.WriteBytes(InfPath, bytes);
        InfLineList lines;
        CHECK_FALSE(GetInfSectionText(InfPath, L"Version", lines));
        CHECK(m.Log().size() == 1);
        ReadAll(m, InfPath);
    }
}

TEST_CASE("An INF that names no Windows cannot be read") {
    Machine m;
    m.WriteText(InfPath, L"[Manufacturer]\r\nMaker=Models\r\n");
    InfLineList lines;
    CHECK_FALSE(GetInfSectionText(InfPath, L"Manufacturer", lines));
    CHECK(m.Log().size() == 1);
    ReadAll(m, InfPath);
}

TEST_CASE("A folder named like an INF cannot be read") {
    Machine m;
    m.MakeFolder(InfPath);
    InfLineList lines;
    CHECK_FALSE(GetInfSectionText(InfPath, L"Version", lines));
    CHECK(m.Log().size() == 1);
}

TEST_CASE("An INF in the system's code page is read like one in UTF-16") {
    Machine m;
    m.WriteBytes(InfPath, "[Version]\r\nSignature=\"$CHICAGO$\"\r\nClass=Ports\r\n"
                          "[Manufacturer]\r\nMaker=Models\r\n[Models]\r\nd=Install,ID\r\n");
    std::wstring className;
    CHECK(GetInfClassName(InfPath, className));
    CHECK(className == L"PORTS");
    DeviceIdList ids;
    CHECK(GetDeviceIDFromInf(InfPath, ids));
    CHECK(ids == TextList{L"ID"});
}

TEST_CASE("Lines with hundreds of fields, long fields and deep nesting are read or refused") {
    std::wstring many = L"[Manufacturer]\r\nMaker=Models";
    for (int i = 0; i < 500; ++i) {
        many += L",NT";
    }
    many += L"\r\n[Models]\r\nd=Install";
    for (int i = 0; i < 500; ++i) {
        many += L",ID" + std::to_wstring(i);
    }
    Machine m;
    ReadAll(m, AddSections(m, many + L"\r\n"));
    ReadAll(m, AddSections(m, L"[Manufacturer]\r\nMaker=" + std::wstring(5000, L'm') + L"\r\n"));
    ReadAll(m, AddSections(m, L"Class=" + std::wstring(5000, L'c') + L"\r\n"));
    ReadAll(m, AddSections(m, L"[Strings]\r\na=%b%\r\nb=%a%\r\n[Manufacturer]\r\n%a%=%b%\r\n"));
    ReadAll(m, AddSections(m, L"[Manufacturer]\r\n=\r\n,\r\n=,\r\n%\r\n\"\r\n"));
}

TEST_CASE("A class name of 511 characters is whole, a longer one is at most that") {
    for (const std::size_t length : {511U, 512U, 600U}) {
        Machine m;
        std::wstring className;
        GetInfClassName(AddSections(m, L"Class=" + std::wstring(length, L'c') + L"\r\n"),
                        className);
        CHECK(className == std::wstring(className.size(), L'C'));
        CHECK(className.size() <= 511);
        CHECK((length > 511 || className.size() == length));
    }
}

TEST_CASE("Whatever stands in an INF, every reading of it ends") {
    constexpr std::wstring_view Pieces[] = {L"[Manufacturer]\r\n",
                                            L"[Models]\r\n",
                                            L"[Models.NTamd64]\r\n",
                                            L"[Install.NT]\r\n",
                                            L"[DrvCopy]\r\n",
                                            L"[DestinationDirs]\r\n",
                                            L"[Strings]\r\n",
                                            L"M=Models,NTamd64\r\n",
                                            L"d=Install,ID\r\n",
                                            L"CopyFiles=DrvCopy\r\n",
                                            L"DrvCopy=10\r\n",
                                            L"DefaultDestDir=12\r\n",
                                            L"%M%",
                                            L"=",
                                            L",",
                                            L"\"",
                                            L"\\\r\n",
                                            L";",
                                            L" ",
                                            L"\r\n",
                                            L"]",
                                            L"\x00E4"};
    std::mt19937 random(20260105);
    Machine m;
    for (int i = 0; i < 150; ++i) {
        m.ForgetJournal();
        std::wstring sections;
        for (std::size_t count = random() % 40; count > 0; --count) {
            sections += Pieces[random() % std::size(Pieces)];
        }
        CAPTURE(sections);
        ReadAll(m, AddSections(m, sections));
    }
}
