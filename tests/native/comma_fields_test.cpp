#include "config/comma_fields.h"

#include "native/random_text.h"
#include "support/doctest_support.h"

namespace {

TextList FieldsOf(std::wstring_view text) {
    TextList fields;
    const std::size_t count = SplitByComma(text, fields);
    CHECK(count == fields.size());
    return fields;
}

} // namespace

TEST_CASE("A text splits at every comma, empty pieces included") {
    CHECK(FieldsOf(L"a,,b") == TextList{L"a", L"", L"b"});
    CHECK(FieldsOf(L"a,b,c") == TextList{L"a", L"b", L"c"});
    CHECK(FieldsOf(L",a") == TextList{L"", L"a"});
    CHECK(FieldsOf(L"a") == TextList{L"a"});
}

TEST_CASE("A comma at the end adds no empty field") {
    CHECK(FieldsOf(L"a,b,") == TextList{L"a", L"b"});
    CHECK(FieldsOf(L"a,,") == TextList{L"a", L""});
}

TEST_CASE("A lone comma is one empty field") {
    CHECK(FieldsOf(L",") == TextList{L""});
    CHECK(FieldsOf(L",,") == TextList{L"", L""});
}

TEST_CASE("Fields keep their blanks and quotes") {
    CHECK(FieldsOf(L" a , \"b ,c\"") == TextList{L" a ", L" \"b ", L"c\""});
}

TEST_CASE("Fields are appended to what the list holds, and counted with it") {
    TextList fields{L"first"};
    CHECK(SplitByComma(L"a,b", fields) == 3);
    CHECK(fields == TextList{L"first", L"a", L"b"});
}

TEST_CASE("Splitting nothing adds nothing and counts 0, whatever the list holds") {
    TextList fields{L"first"};
    CHECK(SplitByComma(L"", fields) == 0);
    CHECK(fields == TextList{L"first"});
}

TEST_CASE("A line of a thousand commas splits into a thousand fields") {
    CHECK(FieldsOf(std::wstring(1000, L',')).size() == 1000);
}

TEST_CASE("Fields joined by commas are the text again, but for a comma at its end") {
    RandomText random(L"a,,b%\x00E4");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring text = random.Text(20);
        TextList fields;
        const std::size_t count = SplitByComma(text, fields);
        REQUIRE(count == fields.size());
        std::wstring joined;
        for (const std::wstring& field : fields) {
            REQUIRE_FALSE(Contains(field, L","));
            joined += field + L",";
        }
        REQUIRE(joined == (text.empty() || text.ends_with(L',') ? text : text + L","));
    }
}
