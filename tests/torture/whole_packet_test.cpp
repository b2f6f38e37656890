// Runs with everything around the packet that a run may meet, with one call in seven failing. (All
// of them when SETUP_TESTS_SEEDS asks for a campaign.)
#include "support/doctest_support.h"
#include "torture/scenes.h"

using namespace torture;

namespace {

constexpr int Seventh = 7;

} // namespace

TEST_CASE("A staging of a whole packet survives a failing call") {
    FailEachCall(Staging("-i, whole packet, mode 0", L"MODE=0\r\nCOPYOEMTIMEOUT=60\r\n"),
                 {ERROR_ACCESS_DENIED}, Seventh);
}

TEST_CASE("A staging of a whole packet that may fall back survives a failing call") {
    FailEachCall(Staging("-i, whole packet, mode 2", L"MODE=2\r\nCOPYOEMTIMEOUT=60\r\n"),
                 {ERROR_NO_SYSTEM_RESOURCES}, Seventh);
}

TEST_CASE("A staging of a whole packet that is late at once survives a failing call") {
    Scenario scenario = Staging("-i, whole packet, mode 2 without a limit", L"MODE=2\r\n");
    scenario.Result = 0;
    FailEachCall(scenario, {ERROR_GEN_FAILURE}, Seventh);
}

TEST_CASE("A direct installation of a whole packet survives a failing call") {
    FailEachCall(DirectInstall(), {ERROR_ACCESS_DENIED}, Seventh);
}

TEST_CASE("An uninstall of a whole packet survives a failing call") {
    FailEachCall(Uninstall(), {ERROR_ACCESS_DENIED, ERROR_NO_SYSTEM_RESOURCES}, 3);
}
