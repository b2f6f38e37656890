#include "torture/closing.h"

#include "support/doctest_support.h"

using namespace machine;

namespace torture {

namespace {

// A staging thread that nobody waits for any more may still write its line, and the hook is removed
// while the process ends: what they write comes after the closing line, in either order.
Lines UpToClosingLine(Lines log) {
    while (!log.empty() &&
           (log.back().starts_with("PreInstallW") || log.back().starts_with("CHookHelper: "))) {
        log.pop_back();
    }
    return log;
}

} // namespace

void CheckClosing(const Machine& m, int result) {
    const Lines log = UpToClosingLine(m.Log());
    REQUIRE_FALSE(log.empty());
    const bool complete = log.back().starts_with("Setup: Setup process complete, total ");
    CHECK(complete == (result == 1));
    CHECK((log.back() == "Setup: Setup process fail,see more detail in log file") == !complete);
    CHECK_FALSE((complete && m.Logged("Setup: Setup process fail,begin rollback...")));
}

std::set<std::string> WorkerSignals() {
    return {"OpenSemaphoreW", "ReleaseSemaphore", "PostThreadMessageW"};
}

} // namespace torture
