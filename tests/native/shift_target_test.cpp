#include "install/mode_switch/shift_target.h"

#include "support/doctest_support.h"

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
