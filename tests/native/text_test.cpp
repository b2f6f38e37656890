#include "common/text.h"

#include "common/limits.h"
#include "native/random_text.h"
#include "support/doctest_support.h"

#include <algorithm>
#include <cwchar>
#include <limits>

namespace {

constexpr std::int32_t Lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t Highest = std::numeric_limits<std::int32_t>::max();

} // namespace

TEST_CASE("A text is cut to one character less than its buffer") {
    const std::wstring id199(199, L'a');
    const std::wstring id200(200, L'a');
    CHECK(Cut(id199, DeviceIdCapacity) == id199);
    CHECK(Cut(id200, DeviceIdCapacity) == id199);
    CHECK(Cut(std::wstring(259, L'p'), PathCapacity).size() == 259);
    CHECK(Cut(std::wstring(260, L'p'), PathCapacity).size() == 259);
    CHECK(Cut(std::wstring(1023, L'l'), ConfigLineCapacity).size() == 1023);
    CHECK(Cut(std::wstring(1024, L'l'), ConfigLineCapacity).size() == 1023);
    CHECK(Cut(std::wstring(512, L'c'), ClassNameCapacity).size() == 511);
    CHECK(Cut(L"abc", 3) == L"ab");
    CHECK(Cut(L"", 3) == L"");
}

TEST_CASE("A buffer of one character or of none holds no text") {
    CHECK(Cut(L"abc", 1) == L"");
    CHECK(Cut(L"abc", 0) == L"");
}

TEST_CASE("The longest text that a cut keeps is the beginning of the whole one") {
    RandomText random(L"ab\\&,\x00E4\x4E2D");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring text = random.Text(40);
        const std::size_t capacity = random.UpTo(45);
        const std::wstring cut = Cut(text, capacity);
        REQUIRE(text.starts_with(cut));
        REQUIRE(cut.size() == std::min(text.size(), capacity == 0 ? 0 : capacity - 1));
    }
}

TEST_CASE("Upper case changes the letters a to z only") {
    CHECK(UpperCase(L"usb\\vid_3a9d&pid_9001") == L"USB\\VID_3A9D&PID_9001");
    CHECK(UpperCase(L"az AZ 09 `{@[") == L"AZ AZ 09 `{@[");
    CHECK(UpperCase(L"\x00E4\x00DF\x0131\x0430") == L"\x00E4\x00DF\x0131\x0430");
    CHECK(UpperCase(L"") == L"");
}

TEST_CASE("Texts are equal when only the case of ASCII letters differs") {
    CHECK(EqualIgnoringCase(L"NTamd64", L"ntAMD64"));
    CHECK(EqualIgnoringCase(L"", L""));
    CHECK_FALSE(EqualIgnoringCase(L"NT", L"NTx"));
    CHECK_FALSE(EqualIgnoringCase(L"NTx", L"NT"));
    CHECK_FALSE(EqualIgnoringCase(L"", L"a"));
}

TEST_CASE("The case of letters beyond ASCII counts") {
    CHECK_FALSE(EqualIgnoringCase(L"\x00E4", L"\x00C4"));
    CHECK_FALSE(EqualIgnoringCase(L"i", L"\x0130"));
    CHECK_FALSE(EqualIgnoringCase(L"k", L"\x212A"));
    CHECK(EqualIgnoringCase(L"x\x00E4", L"X\x00E4"));
}

TEST_CASE("Characters beside the letters in the code table are not folded") {
    CHECK_FALSE(EqualIgnoringCase(L"@", L"`"));
    CHECK_FALSE(EqualIgnoringCase(L"[", L"{"));
    CHECK_FALSE(EqualIgnoringCase(L"\\", L"|"));
    CHECK_FALSE(EqualIgnoringCase(L"_", L"\x007F"));
}

TEST_CASE("Comparing without case is comparing the upper-case texts") {
    RandomText random(L"aAbB\x00E4\x00C4");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring left = random.Text(3);
        const std::wstring right = random.Text(3);
        REQUIRE(EqualIgnoringCase(left, right) == (UpperCase(left) == UpperCase(right)));
        REQUIRE(EqualIgnoringCase(left, UpperCase(left)));
    }
}

TEST_CASE("A part is found anywhere, its case counting") {
    CHECK(Contains(L"USB\\VID&MI_00", L"&MI_"));
    CHECK_FALSE(Contains(L"USB\\VID&mi_00", L"&MI_"));
    CHECK(Contains(L"abc", L"abc"));
    CHECK(Contains(L"abc", L""));
    CHECK_FALSE(Contains(L"ab", L"abc"));
    CHECK_FALSE(Contains(L"", L"a"));
}

TEST_CASE("A list holds a text in any case, and whole entries only") {
    const TextList list{L"Install", L"", L"usb\\vid_3a9d"};
    CHECK(ListHolds(list, L"INSTALL"));
    CHECK(ListHolds(list, L"USB\\VID_3A9D"));
    CHECK(ListHolds(list, L""));
    CHECK_FALSE(ListHolds(list, L"Instal"));
    CHECK_FALSE(ListHolds(list, L"Install2"));
    CHECK_FALSE(ListHolds({}, L""));
}

TEST_CASE("A distinct list keeps the first spelling and the order met") {
    TextList list;
    AppendDistinct(list, L"B");
    AppendDistinct(list, L"a");
    AppendDistinct(list, L"b");
    AppendDistinct(list, L"A");
    AppendDistinct(list, L"");
    AppendDistinct(list, L"");
    CHECK(list == TextList{L"B", L"a", L""});
}

TEST_CASE("Texts split at their last mark") {
    CHECK(BeforeLast(L"USB\\VID\\serial", L'\\') == L"USB\\VID");
    CHECK(AfterLast(L"USB\\VID\\serial", L'\\') == L"serial");
    CHECK(BeforeLast(L"a\\", L'\\') == L"a");
    CHECK(AfterLast(L"a\\", L'\\') == L"");
    CHECK(BeforeLast(L"\\a", L'\\') == L"");
    CHECK(AfterLast(L"\\a", L'\\') == L"a");
}

TEST_CASE("A text without the mark is taken whole, on both sides") {
    CHECK(BeforeLast(L"serial", L'\\') == L"serial");
    CHECK(AfterLast(L"serial", L'\\') == L"serial");
    CHECK(BeforeLast(L"", L'\\') == L"");
    CHECK(AfterLast(L"", L'\\') == L"");
}

TEST_CASE("What follows the last mark is replaced, the mark itself kept") {
    CHECK(ReplaceAfterLast(L"D:\\Packet\\Setup.exe", L'\\', L"Setup.ini") ==
          L"D:\\Packet\\Setup.ini");
    CHECK(ReplaceAfterLast(L"D:\\", L'\\', L"WIN7\\") == L"D:\\WIN7\\");
    CHECK(ReplaceAfterLast(L"Setup.exe", L'\\', L"Setup.ini") == L"Setup.ini");
    CHECK(ReplaceAfterLast(L"", L'\\', L"") == L"");
    CHECK(ReplaceAfterLast(L"D:\\Setup.exe", L'\\', L"") == L"D:\\");
}

TEST_CASE("The parts around the last mark make up the whole text") {
    RandomText random(L"a\\b&");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring text = random.Text(8);
        if (!Contains(text, L"\\")) {
            continue;
        }
        const std::wstring tail = AfterLast(text, L'\\');
        REQUIRE(BeforeLast(text, L'\\') + L"\\" + tail == text);
        REQUIRE(ReplaceAfterLast(text, L'\\', tail) == text);
        REQUIRE_FALSE(Contains(tail, L"\\"));
    }
}

TEST_CASE("A number is read from the start of a text up to the first other character") {
    CHECK(LeadingNumber(L"7601.17514") == 7601);
    CHECK(LeadingNumber(L"3") == 3);
    CHECK(LeadingNumber(L"007") == 7);
    CHECK(LeadingNumber(L"1x2") == 1);
    CHECK(LeadingNumber(L"0x10") == 0);
}

TEST_CASE("Blanks and one sign may stand before a number") {
    CHECK(LeadingNumber(L" \t\n\v\f\r42") == 42);
    CHECK(LeadingNumber(L"-5") == -5);
    CHECK(LeadingNumber(L"+5") == 5);
    CHECK(LeadingNumber(L"  -5") == -5);
    CHECK(LeadingNumber(L"- 5") == 0);
    CHECK(LeadingNumber(L"--5") == 0);
    CHECK(LeadingNumber(L"+-5") == 0);
}

TEST_CASE("A text without a number reads as 0") {
    CHECK(LeadingNumber(L"") == 0);
    CHECK(LeadingNumber(L"   ") == 0);
    CHECK(LeadingNumber(L"-") == 0);
    CHECK(LeadingNumber(L".5") == 0);
    CHECK(LeadingNumber(L"abc") == 0);
    CHECK(LeadingNumber(L"\xFF15") == 0); // a full-width digit
}

TEST_CASE("Numbers out of range are clamped") {
    CHECK(LeadingNumber(L"2147483647") == Highest);
    CHECK(LeadingNumber(L"2147483648") == Highest);
    CHECK(LeadingNumber(L"-2147483648") == Lowest);
    CHECK(LeadingNumber(L"-2147483649") == Lowest);
    CHECK(LeadingNumber(std::wstring(5000, L'9')) == Highest);
    CHECK(LeadingNumber(L"-" + std::wstring(5000, L'9')) == Lowest);
}

TEST_CASE("Every text reads as the number that the C library finds in it") {
    RandomText random(L"0123456789012345678901234567890123456789 \t\n-+.a");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring text = random.Text(14);
        const long long expected = std::wcstoll(text.c_str(), nullptr, 10);
        REQUIRE(LeadingNumber(text) == std::clamp<long long>(expected, Lowest, Highest));
    }
}

TEST_CASE("A number is written in decimal digits") {
    CHECK(DecimalText(0) == L"0");
    CHECK(DecimalText(64) == L"64");
    CHECK(DecimalText(10000) == L"10000");
    CHECK(DecimalText(4294967295U) == L"4294967295");
}
