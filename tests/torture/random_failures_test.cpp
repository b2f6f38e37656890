// Two failing calls in a run, or many, or one with the threads in another order.
#include "support/doctest_support.h"
#include "torture/scenes.h"

using namespace torture;

namespace {

// Of 300 for all scenarios together.
constexpr unsigned Sixty = 60;

const std::wstring WithLimit = L"COPYOEMTIMEOUT=60\r\n";

} // namespace

TEST_CASE("An install run that stages survives any failures") {
    FailAtRandom(Staging("-i, mode 0, random", L"MODE=0\r\n" + WithLimit), SeedsToRun(Sixty));
}

TEST_CASE("An install run that stages and may fall back survives any failures") {
    FailAtRandom(Staging("-i, mode 2, random", L"MODE=2\r\n" + WithLimit), SeedsToRun(Sixty));
}

TEST_CASE("An install run whose first copy is late at once survives any failures") {
    Scenario scenario = Staging("-i, mode 0 without a limit, random", L"MODE=0\r\n");
    scenario.Result = 0;
    // The watchdog's message is lost: then the copies' own decides, and they were made.
    scenario.MayMendAFailure = {"PostThreadMessageW"};
    FailAtRandom(scenario, SeedsToRun(Sixty));
}

TEST_CASE("A direct install run survives any failures") {
    FailAtRandom(DirectInstall(), SeedsToRun(Sixty));
}

TEST_CASE("An uninstall run survives any failures") {
    FailAtRandom(Uninstall(), SeedsToRun(Sixty));
}

TEST_CASE("A staging survives a failing call in any order of the threads") {
    FailInAnyOrder(StagingAlone(0), SeedsToRun(250));
}

TEST_CASE("A staging that may fall back survives a failing call in any order of the threads") {
    FailInAnyOrder(StagingAlone(2), SeedsToRun(250));
}
