#include "torture/closing.h"

#include "support/doctest_support.h"

#include <algorithm>

using namespace machine;

namespace torture {

namespace {

bool IsOfHook(const std::string& line) {
    return line.starts_with("CHookHelper: ");
}

// A staging thread that nobody waits for any more may still write its line after the closing one.
void CheckLastLine(const Machine& m, Lines log, int result) {
    while (!log.empty() && log.back().starts_with("PreInstallW")) {
        log.pop_back();
    }
    REQUIRE_FALSE(log.empty());
    const bool complete = log.back().starts_with("Setup: Setup process complete, total ");
    CHECK(complete == (result == 1));
    CHECK((log.back() == "Setup: Setup process fail,see more detail in log file") == !complete);
    CHECK_FALSE((complete && m.Logged("Setup: Setup process fail,begin rollback...")));
}

} // namespace

void CheckClosing(const Machine& m, int result) {
    CheckLastLine(m, m.Log(), result);
}

void CheckClosingAndHook(const Machine& m, int result) {
    Lines log = m.Log();
    const auto ofHook = std::ranges::find_if(log, IsOfHook);
    CHECK((ofHook != log.end()) == (std::ranges::count(m.FailedCalls(), "CleanHook") != 0));
    if (ofHook != log.end()) {
        // What stands behind it, a late thread wrote; a second one of the hook would show as such.
        log.erase(ofHook);
    }
    CheckLastLine(m, log, result);
}

std::set<std::string> WorkerSignals() {
    return {"OpenSemaphoreW", "ReleaseSemaphore", "PostThreadMessageW"};
}

} // namespace torture
