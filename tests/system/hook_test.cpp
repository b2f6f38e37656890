// The hook library beside the executable.
#include "machine/machine.h"
#include "support/doctest_support.h"
#include "system/hook.h"

using namespace machine;

TEST_CASE("The hook library gets its own path, beside the executable") {
    Machine m;
    CHECK(InstallHook());
    CHECK(m.Story() == Lines{"SetHook(D:\\Packet\\Vantrel64.DLL)"});
    CHECK(m.Log() == Lines{});
}

TEST_CASE("The hook's path follows the executable, whatever the current folder") {
    Machine m;
    m.SetExecutable(L"E:\\Program Files\\A b\\Other.exe");
    CHECK(InstallHook());
    CHECK(m.Story() == Lines{"SetHook(E:\\Program Files\\A b\\Vantrel64.DLL)"});
    CHECK(m.CallsOf("GetModuleFileNameW") == Lines{"GetModuleFileNameW(null, 260)"});
}

TEST_CASE("A hook that the library refuses is reported with its path and reason") {
    Machine m;
    m.FailCall("SetHook", 1, ERROR_MOD_NOT_FOUND);
    CHECK_FALSE(InstallHook());
    CHECK(m.Log() == Lines{"InstallHook: Install hook D:\\Packet\\Vantrel64.DLL fail, error code "
                           "is 0x0000007E"});
}

TEST_CASE("The helper removes the hook when it goes, also when none was installed") {
    Machine m;
    {
        const CHookHelper helper;
        CHECK(m.Calls() == Lines{});
    }
    CHECK(m.Story() == Lines{"CleanHook()"});
}

TEST_CASE("A hook that cannot be removed is reported") {
    Machine m;
    m.FailCall("CleanHook", 1, ERROR_INVALID_HANDLE);
    {
        const CHookHelper helper;
        CHECK(m.Log() == Lines{});
    }
    CHECK(m.Log() == Lines{"CHookHelper: UnInstall hook fail, error code is 0x00000006"});
}
