#include "install/mode_switch/scsi_command.h"

#include "native/random_text.h"
#include "support/doctest_support.h"

namespace {

using Command = std::array<std::uint8_t, 6>;

std::wstring TextOf(const Command& command, bool upperCase) {
    const wchar_t* digits = upperCase ? L"0123456789ABCDEF" : L"0123456789abcdef";
    std::wstring text;
    for (const std::uint8_t byte : command) {
        text += text.empty() ? L"" : L",";
        text += {digits[byte >> 4U], digits[byte & 15U]};
    }
    return text;
}

} // namespace

TEST_CASE("A SCSI command is six hexadecimal numbers") {
    CHECK(ParseScsiCommand(L"1b,0,0,0,2,0") == Command{0x1B, 0, 0, 0, 2, 0});
    CHECK(ParseScsiCommand(L"FF,fe,Ab,09,0,7f") == Command{0xFF, 0xFE, 0xAB, 9, 0, 0x7F});
}

TEST_CASE("Bytes that a SCSI command does not name are 0") {
    CHECK(ParseScsiCommand(L"1b") == Command{0x1B});
    CHECK(ParseScsiCommand(L"1b,") == Command{0x1B});
    CHECK(ParseScsiCommand(L"1b,2") == Command{0x1B, 2});
    CHECK(ParseScsiCommand(L"") == Command{});
}

TEST_CASE("What follows the sixth number of a SCSI command is not read") {
    CHECK(ParseScsiCommand(L"1,2,3,4,5,6,7,8") == Command{1, 2, 3, 4, 5, 6});
}

TEST_CASE("An unreadable number leaves its byte and all later ones 0") {
    CHECK(ParseScsiCommand(L"1b,x,3,4") == Command{0x1B});
    CHECK(ParseScsiCommand(L"g,1,2") == Command{});
    CHECK(ParseScsiCommand(L"1b,,3") == Command{0x1B});
    CHECK(ParseScsiCommand(L",1") == Command{});
    CHECK(ParseScsiCommand(L"-1,2") == Command{});
}

TEST_CASE("A number of a SCSI command has at most two digits") {
    CHECK(ParseScsiCommand(L"1b3,4") == Command{0x1B});
    CHECK(ParseScsiCommand(L"001,4") == Command{});
}

TEST_CASE("Numbers of a SCSI command are separated by single commas") {
    CHECK(ParseScsiCommand(L"1;2,3") == Command{1});
    CHECK(ParseScsiCommand(L"1 ,2") == Command{1});
    CHECK(ParseScsiCommand(L"1 2") == Command{1});
}

TEST_CASE("Blanks before a number of a SCSI command are read over") {
    CHECK(ParseScsiCommand(L" 1b, 2,\t3") == Command{0x1B, 2, 3});
}

TEST_CASE("Every six bytes written as hexadecimal numbers are read again") {
    RandomText random(L"?");
    for (int i = 0; i < RandomTexts; ++i) {
        Command command{};
        for (std::uint8_t& byte : command) {
            byte = static_cast<std::uint8_t>(random.UpTo(255));
        }
        REQUIRE(ParseScsiCommand(TextOf(command, false)) == command);
        REQUIRE(ParseScsiCommand(TextOf(command, true)) == command);
    }
}

TEST_CASE("No text of a SCSI command sets more bytes than it has numbers") {
    RandomText random(L"0123456789abcdefABCDEFxg,,,,,, \t-\x0660");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring text = random.Text(20);
        const Command command = ParseScsiCommand(text);
        std::size_t numbers = 1;
        for (const wchar_t character : text) {
            numbers += character == L',' ? 1U : 0U;
        }
        for (std::size_t index = numbers; index < command.size(); ++index) {
            REQUIRE(command[index] == 0);
        }
    }
}
