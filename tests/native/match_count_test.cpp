#include "install/direct/match_count.h"

#include "common/text.h"
#include "native/random_text.h"
#include "support/doctest_support.h"

TEST_CASE("An interface ID has the base ID of its whole device") {
    CHECK(BaseIdOf(L"usb\\vid_3a9d&pid_9001&mi_02") == L"USB\\VID_3A9D&PID_9001");
    CHECK(BaseIdOf(L"USB\\VID_3A9D&PID_9001&MI_02") == L"USB\\VID_3A9D&PID_9001");
    CHECK(BaseIdOf(L"USB\\VID_3A9D&PID_9001&REV_0100&MI_02") == L"USB\\VID_3A9D&PID_9001&REV_0100");
}

TEST_CASE("An ID without an interface part is its own base ID, upper-cased") {
    CHECK(BaseIdOf(L"usb\\vid_3a9d&pid_9011") == L"USB\\VID_3A9D&PID_9011");
    CHECK(BaseIdOf(L"USB\\VID_3A9D&PID_9011&REV_0100") == L"USB\\VID_3A9D&PID_9011&REV_0100");
    CHECK(BaseIdOf(L"USB\\VID&MI") == L"USB\\VID&MI");
    CHECK(BaseIdOf(L"") == L"");
}

TEST_CASE("A base ID is cut at the last '&', also when that stands behind the interface part") {
    CHECK(BaseIdOf(L"USB\\VID_1&MI_00&REV_2") == L"USB\\VID_1&MI_00");
    CHECK(BaseIdOf(L"&MI_00") == L"");
}

TEST_CASE("Letters beyond ASCII stay as they are in a base ID") {
    CHECK(BaseIdOf(L"usb\\\x00E4&mi_00") == L"USB\\\x00E4");
}

TEST_CASE("A base ID has at most 199 characters") {
    const std::wstring id199 = std::wstring(192, L'X') + L"&MI_00";
    CHECK(BaseIdOf(std::wstring(199, L'x')) == std::wstring(199, L'X'));
    CHECK(BaseIdOf(std::wstring(200, L'x')) == std::wstring(199, L'X'));
    CHECK(BaseIdOf(id199 + L"0") == std::wstring(192, L'X'));
    // The mark itself is cut apart: what is left names no interface.
    CHECK(BaseIdOf(std::wstring(197, L'X') + L"&MI_00") == std::wstring(197, L'X') + L"&M");
}

TEST_CASE("A base ID is the beginning of the upper-cased ID, however the ID looks") {
    RandomText random(L"a&&MI_\\\x00E4");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring id = random.Text(220);
        const std::wstring base = BaseIdOf(id);
        REQUIRE(base.size() <= 199);
        REQUIRE(UpperCase(id).starts_with(base));
        REQUIRE(base == BaseIdOf(UpperCase(id)));
    }
}

TEST_CASE("As many matches are expected as the packet lists interfaces of the device") {
    const TextList packet{L"USB\\VID_3A9D&PID_9001&MI_00", L"usb\\vid_3a9d&pid_9001&mi_02",
                          L"USB\\VID_3A9D&PID_9001&MI_03", L"USB\\VID_3A9D&PID_9011"};
    CHECK(ExpectedMatches(packet, L"USB\\VID_3A9D&PID_9001&MI_02") == 3);
    CHECK(ExpectedMatches(packet, L"usb\\vid_3a9d&pid_9001&mi_77") == 3);
    CHECK(ExpectedMatches(packet, L"USB\\VID_3A9D&PID_9011") == 1);
    CHECK(ExpectedMatches(packet, L"USB\\VID_3A9D&PID_9003") == 0);
    CHECK(ExpectedMatches({}, L"USB\\VID_3A9D&PID_9001") == 0);
}
