#include "operations/template_line.h"

#include "config/comma_fields.h"
#include "native/random_text.h"
#include "support/doctest_support.h"

TEST_CASE("Each parameter takes the place of the next placeholder") {
    const FilledLine line = FillTemplate(L"3,%s,a.sys,%s,a.sys,$CD,$OSDRIVER",
                                         {L"D:\\Packet\\", L"C:\\Windows\\SYSTEM32\\DRIVERS\\"});
    CHECK(line.Text ==
          L"3,D:\\Packet\\,a.sys,C:\\Windows\\SYSTEM32\\DRIVERS\\,a.sys,$CD,$OSDRIVER");
    CHECK(line.Fields == TextList{L"3", L"D:\\Packet\\", L"a.sys",
                                  L"C:\\Windows\\SYSTEM32\\DRIVERS\\", L"a.sys", L"$CD",
                                  L"$OSDRIVER"});
    CHECK_FALSE(line.WasCut);
}

TEST_CASE("The character behind a percent sign belongs to the placeholder, whatever it is") {
    CHECK(FillTemplate(L"1,%dx,%%", {L"A", L"B"}).Text == L"1,Ax,B");
    CHECK(FillTemplate(L"1,%,x", {L"A"}).Text == L"1,Ax");
    CHECK(FillTemplate(L"1,a%", {L"A"}).Text == L"1,aA");
    CHECK(FillTemplate(L"%", {L"A", L"B"}).Text == L"A");
}

TEST_CASE("Placeholders beyond the parameters stay as they are") {
    CHECK(FillTemplate(L"1,%s,%s,%s", {L"A"}).Text == L"1,A,%s,%s");
}

TEST_CASE("Parameters beyond the placeholders are dropped") {
    CHECK(FillTemplate(L"1,%s,x", {L"A", L"B", L"C"}).Text == L"1,A,x");
    CHECK(FillTemplate(L"1,x", {L"A"}).Text == L"1,x");
}

TEST_CASE("A line without parameters fills to nothing") {
    const FilledLine line = FillTemplate(L"2,C:\\tmp\\,a.txt,x,x", {});
    CHECK(line.Text.empty());
    CHECK(line.Fields.empty());
    CHECK_FALSE(line.WasCut);
    CHECK(line.WholeFields == 0);
}

TEST_CASE("An empty line with a parameter fills to nothing") {
    CHECK(FillTemplate(L"", {L"A"}).Fields.empty());
}

TEST_CASE("A percent sign inside a parameter is no placeholder") {
    CHECK(FillTemplate(L"1,%s,%s", {L"%s", L"B"}).Text == L"1,%s,B");
}

TEST_CASE("A comma inside a parameter makes two fields of it") {
    CHECK(FillTemplate(L"1,%s,x", {L"a,b"}).Fields == TextList{L"1", L"a", L"b", L"x"});
}

TEST_CASE("An empty parameter empties its field") {
    CHECK(FillTemplate(L"1,%s,x", {L""}).Fields == TextList{L"1", L"", L"x"});
}

TEST_CASE("A filled line of 259 characters is whole, one of 260 is cut") {
    const FilledLine whole = FillTemplate(L"1,%s", {std::wstring(257, L'p')});
    CHECK(whole.Text.size() == 259);
    CHECK_FALSE(whole.WasCut);
    CHECK(whole.WholeFields == 2);
    const FilledLine cut = FillTemplate(L"1,%s", {std::wstring(258, L'p')});
    CHECK(cut.Text == L"1," + std::wstring(257, L'p'));
    CHECK(cut.WasCut);
    CHECK(cut.Field(1).size() == 257);
}

TEST_CASE("The last field of a cut line does not count as whole") {
    const FilledLine line = FillTemplate(L"1,a,%s", {std::wstring(300, L'p')});
    CHECK(line.Fields.size() == 3);
    CHECK(line.WholeFields == 2);
}

TEST_CASE("A field that ends where the line is cut is whole") {
    // 258 and 259 characters in front of the comma that ends the second field.
    CHECK(FillTemplate(L"1,%s,b", {std::wstring(256, L'p')}).WholeFields == 2);
    CHECK(FillTemplate(L"1,%s,b", {std::wstring(257, L'p')}).WholeFields == 2);
    // One more, and the field has lost its last character.
    CHECK(FillTemplate(L"1,%s,b", {std::wstring(258, L'p')}).WholeFields == 1);
}

TEST_CASE("An empty field that is cut away right before its comma is whole") {
    const FilledLine line = FillTemplate(L"1,%s,,b", {std::wstring(256, L'p')});
    CHECK(line.Text.back() == L',');
    CHECK(line.WholeFields == 3);
    CHECK(line.Field(2) == L"");
}

TEST_CASE("A field that is not there reads as empty") {
    const FilledLine line = FillTemplate(L"1,%s", {L"A"});
    CHECK(line.Field(1) == L"A");
    CHECK(line.Field(2) == L"");
    CHECK(line.Field(1000) == L"");
}

TEST_CASE("A line with many placeholders and long parameters stays within its bounds") {
    std::wstring line;
    for (int i = 0; i < 500; ++i) {
        line += L"%s";
    }
    const FilledLine filled = FillTemplate(line, TextList(500, std::wstring(1023, L'p')));
    CHECK(filled.Text == std::wstring(259, L'p'));
    CHECK(filled.WasCut);
}

TEST_CASE("Whatever the line and its parameters are, the filled line keeps its bounds") {
    RandomText random(L"1,,%%sap");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring line = random.Text(random.UpTo(3) == 0 ? 300 : 30);
        TextList parameters(random.UpTo(4));
        std::size_t given = line.size();
        for (std::wstring& parameter : parameters) {
            parameter = random.Text(random.UpTo(3) == 0 ? 300 : 10);
            given += parameter.size();
        }
        const FilledLine filled = FillTemplate(line, parameters);
        REQUIRE(filled.Text.size() <= 259);
        REQUIRE((!filled.WasCut || filled.Text.size() == 259));
        REQUIRE((!filled.WasCut || given > 259));
        REQUIRE((!parameters.empty() || filled.Text.empty()));
        TextList fields;
        SplitByComma(filled.Text, fields);
        REQUIRE(filled.Fields == fields);
        REQUIRE((filled.WasCut || filled.WholeFields == filled.Fields.size()));
        REQUIRE(filled.WholeFields <= filled.Fields.size() + 1);
        if (!Contains(line, L"%") && !parameters.empty()) {
            REQUIRE(filled.Text == Cut(line, 260));
        }
    }
}
