#include "install/devices/device_ids.h"

#include "native/random_text.h"
#include "support/doctest_support.h"

#include <algorithm>
#include <set>

TEST_CASE("A device's ID is its instance ID without the last part") {
    CHECK(DeviceIdOf(L"USB\\VID_3A9D&PID_9001\\0123") == L"USB\\VID_3A9D&PID_9001");
    CHECK(DeviceIdOf(L"USB\\VID_3A9D&PID_9001\\") == L"USB\\VID_3A9D&PID_9001");
    CHECK(DeviceIdOf(L"NOBACKSLASH") == L"NOBACKSLASH");
    CHECK(DeviceIdOf(L"") == L"");
}

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

TEST_CASE("Composite IDs: exact ones in front, the last met first, derived ones behind") {
    const CompositeIds ids =
        CompositeIdsOf({L"USB\\VID_3A9D&PID_9001&MI_00", L"USB\\VID_3A9D&PID_9001&MI_02",
                        L"usb\\vid_3a9d&pid_9002", L"USB\\VID_3A9D&PID_9003"});
    CHECK(ids.Ids == TextList{L"USB\\VID_3A9D&PID_9003", L"USB\\VID_3A9D&PID_9002",
                              L"USB\\VID_3A9D&PID_9001"});
    CHECK(ids.ExactMatchFound);
}

TEST_CASE("A packet of interface IDs only has no exact composite ID") {
    const CompositeIds ids = CompositeIdsOf({L"usb\\vid_1&mi_00", L"USB\\VID_2&MI_00"});
    CHECK(ids.Ids == TextList{L"USB\\VID_1", L"USB\\VID_2"});
    CHECK_FALSE(ids.ExactMatchFound);
}

TEST_CASE("An exact ID that an interface already stands for is no second entry but is noted") {
    const CompositeIds ids = CompositeIdsOf({L"USB\\VID_1&MI_00", L"USB\\VID_1"});
    CHECK(ids.Ids == TextList{L"USB\\VID_1"});
    CHECK(ids.ExactMatchFound);
}

TEST_CASE("A composite ID is cut at the first interface part") {
    CHECK(CompositeIdsOf({L"USB\\VID_1&MI_00&MI_01"}).Ids == TextList{L"USB\\VID_1"});
    CHECK(CompositeIdsOf({}).Ids.empty());
    CHECK(CompositeIdsOf({L""}).Ids == TextList{L""});
}

TEST_CASE("Composite IDs are upper-case, distinct and never longer than a buffer") {
    RandomText random(L"ab&MImi_");
    for (int i = 0; i < RandomTexts; ++i) {
        TextList listed(random.UpTo(12));
        for (std::wstring& id : listed) {
            id = random.UpTo(9) == 0 ? random.Text(230) : random.Text(8);
        }
        const CompositeIds result = CompositeIdsOf(listed);
        REQUIRE(result.Ids.size() <= listed.size());
        REQUIRE(std::set<std::wstring>(result.Ids.begin(), result.Ids.end()).size() ==
                result.Ids.size());
        for (const std::wstring& id : result.Ids) {
            REQUIRE(id.size() <= 199);
            REQUIRE(id == UpperCase(id));
            REQUIRE_FALSE(Contains(id, L"&MI_"));
        }
    }
}

TEST_CASE("The device to switch matches but for its revision") {
    CHECK(MatchesShiftDevice(L"USB\\VID_3A9D&PID_9001&REV_0100", L"usb\\vid_3a9d&pid_9001"));
    CHECK(MatchesShiftDevice(L"usb\\vid_3a9d&pid_9001&rev_0100", L"USB\\VID_3A9D&PID_9001"));
    CHECK(MatchesShiftDevice(L"USB\\VID_3A9D&PID_9001", L"USB\\VID_3A9D&PID_9001"));
    CHECK(MatchesShiftDevice(L"USB\\VID_1&REV_1&REV_2&MI_0", L"USB\\VID_1"));
}

TEST_CASE("The configured device to switch is not cut at its revision") {
    CHECK_FALSE(
        MatchesShiftDevice(L"USB\\VID_3A9D&PID_9001&REV_0100", L"USB\\VID_3A9D&PID_9001&REV_0100"));
}

TEST_CASE("A further part behind the product makes another device to switch") {
    CHECK_FALSE(MatchesShiftDevice(L"USB\\VID_3A9D&PID_9001&MI_00", L"USB\\VID_3A9D&PID_9001"));
    CHECK_FALSE(MatchesShiftDevice(L"USB\\VID_3A9D&PID_900", L"USB\\VID_3A9D&PID_9001"));
    CHECK_FALSE(MatchesShiftDevice(L"\x00E4", L"\x00C4"));
}

TEST_CASE("Classes are ranked PORTS, MODEM, NET, MEDIA, none") {
    CHECK(RankOfClass(L"PORTS") == 1);
    CHECK(RankOfClass(L"MODEM") == 2);
    CHECK(RankOfClass(L"NET") == 3);
    CHECK(RankOfClass(L"MEDIA") == 4);
    CHECK(RankOfClass(L"") == 5);
    CHECK(RankOfUnreadableClass == 5);
}

TEST_CASE("Every other class ranks before all others") {
    CHECK(RankOfClass(L"IMAGE") == 0);
    CHECK(RankOfClass(L"Ports") == 0);
    CHECK(RankOfClass(L"PORTS ") == 0);
}
