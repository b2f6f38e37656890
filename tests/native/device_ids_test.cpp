#include "install/devices/device_ids.h"

#include "support/doctest_support.h"

TEST_CASE("A device's ID is its instance ID without the last part") {
    CHECK(DeviceIdOf(L"USB\\VID_3A9D&PID_9001\\0123") == L"USB\\VID_3A9D&PID_9001");
    CHECK(DeviceIdOf(L"USB\\VID_3A9D&PID_9001\\") == L"USB\\VID_3A9D&PID_9001");
    CHECK(DeviceIdOf(L"NOBACKSLASH") == L"NOBACKSLASH");
    CHECK(DeviceIdOf(L"") == L"");
}
