// Sections of an INF as lines and fields.
#include "inf/section_reader.h"

#include "inf/inf_files.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

// The fields of all lines of section [S] of an INF with these sections.
std::vector<TextList> FieldsOf(const std::wstring& sections) {
    Machine m;
    InfLineList lines;
    CHECK(GetInfSectionText(AddSections(m, sections), L"S", lines));
    CHECK(m.Log() == Lines{});
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    std::vector<TextList> fields;
    for (const InfLine& line : lines) {
        fields.push_back(line.Fields);
    }
    return fields;
}

// Reads the three lines of a small INF after `prepare` has told what fails; returns how many lines
// were read, -1 - that number when the reading failed.
template <typename Prepare>
int LinesReadWhen(Prepare prepare) {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\na=1\r\nb=2\r\nc=3\r\n");
    prepare(m);
    InfLineList lines;
    const bool read = GetInfSectionText(path, L"S", lines);
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    CHECK(m.Log() == Lines{});
    const int count = static_cast<int>(lines.size());
    return read ? count : -1 - count;
}

} // namespace

TEST_CASE("A line with a key gives the key and the values as fields") {
    CHECK(FieldsOf(L"[S]\r\nModelsX = Install, USB\\VID_3A9D&PID_9001\r\n") ==
          std::vector<TextList>{{L"ModelsX", L"Install", L"USB\\VID_3A9D&PID_9001"}});
}

TEST_CASE("A line without a key whose place the parser refuses has an empty first field") {
    CHECK(FieldsOf(L"[S]\r\nx,y,z\r\n") == std::vector<TextList>{{L"", L"x", L"y", L"z"}});
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\nusbser.sys\r\n");
    m.FailCall("SetupGetStringFieldW", 1, ERROR_SUCCESS + 87);
    InfLineList lines;
    CHECK(GetInfSectionText(path, L"S", lines));
    REQUIRE(lines.size() == 1);
    CHECK(lines[0].Fields == TextList{L"", L"usbser.sys"});
}

TEST_CASE(
    "A value that is refused without a reason is left out, whatever error an earlier call left") {
    Machine m;
    // Every success leaves what would be the answer to a question for the size.
    m.Windows().AfterSuccess = Variants::LastError::Stray;
    const std::wstring path = AddSections(m, L"[S]\r\na=1,2,3\r\n");
    // Two calls each: the key, the first value, the second.
    m.FailCall("SetupGetStringFieldW", 5, ErrorAsBefore);
    InfLineList lines;
    CHECK(GetInfSectionText(path, L"S", lines));
    REQUIRE(lines.size() == 1);
    CHECK(lines[0].Fields == TextList{L"a", L"1", L"3"});
}

TEST_CASE("A single value without a key is its own key to the parser") {
    CHECK(FieldsOf(L"[S]\r\nusbser.sys\r\n") ==
          std::vector<TextList>{{L"usbser.sys", L"usbser.sys"}});
}

TEST_CASE("A key without a value has one empty value") {
    CHECK(FieldsOf(L"[S]\r\nk=\r\n") == std::vector<TextList>{{L"k", L""}});
}

TEST_CASE("String keys arrive substituted, quoted values without their quotes") {
    CHECK(FieldsOf(
              L"[S]\r\n%Name%=\"a, b\",%Name%,\"%Name%\"\r\n[Strings]\r\nName=\"A modem\"\r\n") ==
          std::vector<TextList>{{L"A modem", L"a, b", L"A modem", L"A modem"}});
}

TEST_CASE("Comments and continued lines are the parser's business") {
    CHECK(FieldsOf(L"[S]\r\n; nothing\r\na=1, \\\r\n  2 ; two\r\n\r\nb=3\r\n") ==
          std::vector<TextList>{{L"a", L"1", L"2"}, {L"b", L"3"}});
}

TEST_CASE("An empty value between two commas keeps its place") {
    CHECK(FieldsOf(L"[S]\r\na=1,,3\r\n") == std::vector<TextList>{{L"a", L"1", L"", L"3"}});
}

TEST_CASE("A section name is found in any case, and letters beyond ASCII are kept") {
    CHECK(FieldsOf(L"[s]\r\na=\x00E4\x4E2D\r\n") == std::vector<TextList>{{L"a", L"\x00E4\x4E2D"}});
}

TEST_CASE("A line's text is what the parser gives, its buffers sized by the parser") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\nkey = one, \"two\"\r\n");
    InfLineList lines;
    CHECK(GetInfSectionText(path, L"S", lines));
    REQUIRE(lines.size() == 1);
    const Lines journal = m.Journal();
    REQUIRE(journal.size() > 2);
    CHECK(journal[0] == "SetupGetInfInformationW(D:\\Packet\\WIN7\\a.inf, 2, 0)");
    CHECK(journal[1].starts_with("SetupGetInfInformationW(D:\\Packet\\WIN7\\a.inf, 2, "));
    const std::string size = std::to_string(lines[0].Text.size() + 1);
    CHECK(Lines(journal.begin() + 2, journal.end()) ==
          Lines{"SetupOpenInfFileW(D:\\Packet\\WIN7\\a.inf, null, 2)",
                "SetupFindFirstLineW(inf1, S, null)", "SetupGetLineTextW(inf1, null, 0)",
                "SetupGetLineTextW(inf1, _, " + size + ")", "SetupGetFieldCount()",
                "SetupGetStringFieldW(0, null, 0)", "SetupGetStringFieldW(0, _, 4)",
                "SetupGetStringFieldW(1, null, 0)", "SetupGetStringFieldW(1, _, 4)",
                "SetupGetStringFieldW(2, null, 0)", "SetupGetStringFieldW(2, _, 4)",
                "SetupFindNextLine()", "SetupCloseInfFile(inf1)"});
}

TEST_CASE("A missing section is no failure and gives no lines") {
    Machine m;
    InfLineList lines{{L"old", {L"old"}}};
    CHECK(GetInfSectionText(AddSections(m, L"[T]\r\na=1\r\n"), L"S", lines));
    CHECK(lines.empty());
    CHECK(m.Log() == Lines{});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("An empty path is refused and the list stays") {
    const Machine m;
    InfLineList lines{{L"old", {L"old"}}};
    CHECK_FALSE(GetInfSectionText(L"", L"S", lines));
    CHECK(lines.size() == 1);
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("A missing file is logged as an information failure, and the list is cleared") {
    const Machine m;
    InfLineList lines{{L"old", {L"old"}}};
    CHECK_FALSE(GetInfSectionText(L"D:\\Packet\\none.inf", L"S", lines));
    CHECK(lines.empty());
    CHECK(m.Log() == Lines{"GetInfSectionText: Get inf D:\\Packet\\none.inf information "
                           "fail,error code 0x00000002"});
}

TEST_CASE("A refused second information call is logged like the first") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\na=1\r\n");
    m.FailCall("SetupGetInfInformationW", 2, ERROR_ACCESS_DENIED);
    InfLineList lines;
    CHECK_FALSE(GetInfSectionText(path, L"S", lines));
    CHECK(m.Log() == Lines{"GetInfSectionText: Get inf D:\\Packet\\WIN7\\a.inf information "
                           "fail,error code 0x00000005"});
}

TEST_CASE("A size query that names a small buffer is no information failure") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\na=1\r\n");
    m.FailCall("SetupGetInfInformationW", 1, ERROR_INSUFFICIENT_BUFFER);
    InfLineList lines;
    GetInfSectionText(path, L"S", lines);
    CHECK(m.CallsOf("SetupGetInfInformationW").size() == 2);
}

TEST_CASE("An INF that cannot be opened is logged") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\na=1\r\n");
    m.FailCall("SetupOpenInfFileW", 1, ERROR_SHARING_VIOLATION);
    InfLineList lines;
    CHECK_FALSE(GetInfSectionText(path, L"S", lines));
    CHECK(m.Log() ==
          Lines{"GetInfSectionText: Open inf D:\\Packet\\WIN7\\a.inf fail,error code 0x00000020"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A line whose text cannot be read ends the reading without a log line") {
    CHECK(LinesReadWhen([](Machine&) {}) == 3);
    CHECK(LinesReadWhen([](Machine& m) {
              m.FailCall("SetupGetLineTextW", 1, ERROR_INVALID_PARAMETER);
          }) == -1);
    CHECK(LinesReadWhen([](Machine& m) {
              m.FailCall("SetupGetLineTextW", 2, ERROR_INVALID_PARAMETER);
          }) == -1);
    CHECK(LinesReadWhen([](Machine& m) {
              m.FailCall("SetupGetLineTextW", 5, ERROR_INVALID_PARAMETER);
          }) == -1 - 2);
}

TEST_CASE("A field that was sized but cannot be read ends the reading without a log line") {
    CHECK(LinesReadWhen([](Machine& m) { m.FailCall("SetupGetStringFieldW", 2, 5); }) == -1);
    CHECK(LinesReadWhen([](Machine& m) { m.FailCall("SetupGetStringFieldW", 8, 5); }) == -1 - 1);
}

TEST_CASE("A size query for a field that names a small buffer goes on to the reading") {
    // The size stays 0: the reading then fails, and with it the whole section.
    CHECK(LinesReadWhen([](Machine& m) {
              m.FailCall("SetupGetStringFieldW", 1, ERROR_INSUFFICIENT_BUFFER);
          }) == -1);
}

TEST_CASE("A listing of lines that breaks off is what was read until then") {
    CHECK(LinesReadWhen([](Machine& m) { m.FailCall("SetupFindNextLine", 2, 5); }) == 2);
    CHECK(LinesReadWhen([](Machine& m) { m.FailCall("SetupFindFirstLineW", 1, 5); }) == 0);
}

TEST_CASE("A refused value leaves no gap: the values behind it move down") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\nkey=one,two,three\r\n");
    // Index 0 takes two calls, index 1 the third.
    m.FailCall("SetupGetStringFieldW", 3, ERROR_INVALID_PARAMETER);
    InfLineList lines;
    CHECK(GetInfSectionText(path, L"S", lines));
    REQUIRE(lines.size() == 1);
    CHECK(lines[0].Fields == TextList{L"key", L"two", L"three"});
}

TEST_CASE("A field refused without a reason is refused, whatever failed before") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\nx,y,z\r\n");
    // Leaves its error behind, which is no answer to the question for the key.
    m.FailCall("SetupGetFieldCount", 1, ERROR_INSUFFICIENT_BUFFER);
    InfLineList lines;
    CHECK(GetInfSectionText(path, L"S", lines));
    REQUIRE(lines.size() == 1);
    CHECK(lines[0].Fields == TextList{L""});
}

TEST_CASE("A line of which the parser counts no value has its key only") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\nkey=one\r\n");
    m.FailCall("SetupGetFieldCount", 1, ERROR_INVALID_PARAMETER);
    InfLineList lines;
    CHECK(GetInfSectionText(path, L"S", lines));
    REQUIRE(lines.size() == 1);
    CHECK(lines[0].Fields == TextList{L"key"});
}

TEST_CASE("Lines are selected by their key, its case ignored") {
    Machine m;
    const std::wstring path = AddSections(
        m, L"[S]\r\nClass=Ports\r\nClassGUID={1}\r\nother=x\r\nCLASS=Modem\r\nClas=y\r\n");
    InfLineList lines;
    CHECK(GetInfSectionTextByKey(path, L"S", L"class", lines));
    REQUIRE(lines.size() == 2);
    CHECK(lines[0].Fields == TextList{L"Class", L"Ports"});
    CHECK(lines[1].Fields == TextList{L"CLASS", L"Modem"});
}

TEST_CASE("A key that no line has selects nothing, which is no failure") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\nClassGUID={1}\r\n\x00E4=1\r\n");
    InfLineList lines;
    CHECK(GetInfSectionTextByKey(path, L"S", L"Class", lines));
    CHECK(GetInfSectionTextByKey(path, L"S", L"\x00C4", lines));
    CHECK(GetInfSectionTextByKey(path, L"T", L"Class", lines));
    CHECK(lines.empty());
}

TEST_CASE("An empty key selects every line") {
    Machine m;
    InfLineList lines;
    CHECK(GetInfSectionTextByKey(AddSections(m, L"[S]\r\na=1\r\nb,c\r\n"), L"S", L"", lines));
    CHECK(lines.size() == 2);
}

TEST_CASE("Selected lines are appended to the list") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\na=1\r\nb=2\r\n");
    InfLineList lines;
    CHECK(GetInfSectionTextByKey(path, L"S", L"a", lines));
    CHECK(GetInfSectionTextByKey(path, L"S", L"a", lines));
    REQUIRE(lines.size() == 2);
    CHECK(lines[1].Fields == TextList{L"a", L"1"});
}

TEST_CASE("Without a path or a section nothing is selected and the list stays") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\na=1\r\n");
    InfLineList lines{{L"old", {L"old"}}};
    CHECK_FALSE(GetInfSectionTextByKey(L"", L"S", L"a", lines));
    CHECK_FALSE(GetInfSectionTextByKey(path, L"", L"a", lines));
    CHECK(lines.size() == 1);
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("When the section cannot be read nothing is selected and the list stays") {
    Machine m;
    const std::wstring path = AddSections(m, L"[S]\r\na=1\r\na=2\r\n");
    m.FailCall("SetupGetLineTextW", 3, ERROR_INVALID_PARAMETER);
    InfLineList lines{{L"old", {L"old"}}};
    CHECK_FALSE(GetInfSectionTextByKey(path, L"S", L"a", lines));
    CHECK(lines.size() == 1);
}
