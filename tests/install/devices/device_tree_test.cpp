#include "install/devices/device_tree.h"
#include "install/engine.h"

using namespace machine;

TEST_CASE("The refresh waits as configured, re-enumerates from the root and waits again") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nSCSIRSPTIMEOUT=3\r\n");
    m.PendingInstallationsTake(200ms);
    CHECK(RefreshDeviceSet());
    CHECK(m.Story() == Lines{"LOG RefreshDeviceSet: Waiting 3 seconds for system to enum device...",
                             "Sleep(3000)", "CMP_WaitNoPendingInstallEvents(INFINITE)",
                             "CM_Locate_DevNodeW(null, 0)", "CM_Reenumerate_DevNode(0)",
                             "CMP_WaitNoPendingInstallEvents(INFINITE)",
                             "LOG RefreshDeviceSet: Device is ready for auto match"});
    CHECK(m.Now() == 3400ms);
    CheckTidy(m);
}

TEST_CASE("Without a configured time the refresh does not sleep and reports 0 seconds") {
    Machine m;
    CHECK(RefreshDeviceSet());
    CHECK(m.Log() == Lines{"RefreshDeviceSet: Waiting 0 seconds for system to enum device...",
                           "RefreshDeviceSet: Device is ready for auto match"});
    CHECK(m.Now() == 0ms);
}

TEST_CASE("The refresh's time is multiplied without bounds") {
    Machine m;
    // 4294968 seconds are 704 milliseconds more than 32 bits hold.
    m.WriteIni(L"[ENUM]\r\nSCSIRSPTIMEOUT=4294968\r\n");
    CHECK(RefreshDeviceSet());
    CHECK(m.CallsOf("Sleep") == Lines{"Sleep(704)"});
    CHECK(m.Logged("RefreshDeviceSet: Waiting 4294968 seconds for system to enum device..."));
}

TEST_CASE("A negative refresh time is logged as it stands") {
    Machine m;
    m.SetStepBudget(1000, std::chrono::hours(2000));
    m.WriteIni(L"[ENUM]\r\nSCSIRSPTIMEOUT=-2\r\n");
    CHECK(RefreshDeviceSet());
    CHECK(m.CallsOf("Sleep") == Lines{"Sleep(4294965296)"});
    CHECK(m.Logged("RefreshDeviceSet: Waiting -2 seconds for system to enum device..."));
}

TEST_CASE("A root node that cannot be located ends the refresh with the last error") {
    Machine m;
    m.FailCall("CM_Locate_DevNodeW", 1, 5);
    CHECK_FALSE(RefreshDeviceSet());
    CHECK(m.Story() ==
          Lines{"LOG RefreshDeviceSet: Waiting 0 seconds for system to enum device...", "Sleep(0)",
                "CMP_WaitNoPendingInstallEvents(INFINITE)",
                "CM_Locate_DevNodeW(null, 0) -> fails 0x5",
                "LOG RefreshDeviceSet: Locate device root node fail,error code 0x00000005"});
}

TEST_CASE("A re-enumeration that fails ends the refresh with the last error") {
    Machine m;
    m.FailCall("CM_Reenumerate_DevNode", 1, 0xE000020B);
    CHECK_FALSE(RefreshDeviceSet());
    CHECK(m.Log() == Lines{"RefreshDeviceSet: Waiting 0 seconds for system to enum device...",
                           "RefreshDeviceSet: Reenumerate device node fail,error code 0xE000020B"});
    CHECK(m.CallsOf("CMP_WaitNoPendingInstallEvents").size() == 1);
}

TEST_CASE("A wait for pending installations that fails does not stop the refresh") {
    Machine m;
    m.FailCallsFrom("CMP_WaitNoPendingInstallEvents", 1, 5);
    CHECK(RefreshDeviceSet());
    CHECK(m.Logged("RefreshDeviceSet: Device is ready for auto match"));
}

TEST_CASE("The bare re-enumeration neither waits nor logs when it succeeds") {
    Machine m;
    CHECK(ReenumerateDeviceTree());
    CHECK(m.Journal() == Lines{"CM_Locate_DevNodeW(null, 0)", "CM_Reenumerate_DevNode(0)"});
}
