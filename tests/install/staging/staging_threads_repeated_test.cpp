// The staging threads in 200 orders each: the same result every time, and nothing left open.
#include "install/staging/staging_packet.h"
#include "machine/guarded_memory.h"
#include "support/doctest_support.h"

#include <set>

using namespace staging;

namespace {

constexpr unsigned Rounds = 200;

// Runs the staging in another order of the threads each time; `prepare` sets the machine up and
// `check` looks at the result. Whatever the order, all threads end and no handle stays open.
template <typename Prepare, typename Check>
void Repeat(int infs, std::wstring_view ini, Prepare prepare, Check check) {
    std::set<Lines> orders;
    for (unsigned seed = 1; seed <= Rounds; ++seed) {
        CAPTURE(seed);
        Machine m;
        AddPacket(m, infs, ini);
        InstallModeValue = 0;
        prepare(m);
        m.ShuffleThreads(seed);
        const bool staged = PreInstall();
        m.ReleaseHungCopies();
        m.LetThreadsFinish();
        const UnguardedScope unguarded;
        check(m, staged);
        CHECK(m.RunningThreads() == 0);
        CHECK(m.LeakSummary() == "");
        CHECK(m.Misuses() == Lines{});
        CHECK(m.ThreadFailure() == "");
        orders.insert(m.Story());
    }
    // Otherwise the seeds would show nothing.
    CHECK(orders.size() > Rounds / 10);
}

void Nothing(Machine&) {}

} // namespace

TEST_CASE("Copies that are done at once succeed in every order of the threads") {
    Repeat(3, FiveSeconds, Nothing, [](const Machine& m, bool staged) {
        CHECK(staged);
        CHECK(m.Logged("PreInstall: Message 0x7EB from thread 0x00000108"));
        CHECK(m.CallsOf("SetupCopyOEMInfW").size() == 3);
    });
}

TEST_CASE("Copies that stay below the limit succeed in every order of the threads") {
    const auto slow = [](Machine& m) {
        m.CopyTakes(1, 4999ms);
        m.CopyTakes(2, 1ms);
        m.CopyTakes(3, 4999ms);
    };
    Repeat(3, FiveSeconds, slow, [](const Machine& m, bool staged) {
        CHECK(staged);
        CHECK(m.Logged("PreInstall: Message 0x7EB from thread 0x00000108"));
    });
}

TEST_CASE("A copy above the limit fails in every order of the threads") {
    const auto late = [](Machine& m) { m.CopyTakes(1, 5001ms); };
    Repeat(2, FiveSeconds, late, [](const Machine& m, bool staged) {
        CHECK_FALSE(staged);
        CHECK(m.Logged("PreInstall: Message 0x7E9 from thread 0x00000104"));
        CHECK(m.UnreadMessages() == std::vector<UINT>{2027});
    });
}

TEST_CASE("A copy that hangs ends in time in every order of the threads") {
    const auto hang = [](Machine& m) { m.CopyHangs(1); };
    Repeat(2, FiveSeconds, hang, [](const Machine& m, bool staged) {
        CHECK_FALSE(staged);
        CHECK(m.Logged("PreInstall: Message 0x7E9 from thread 0x00000104"));
    });
}

TEST_CASE("A copy that fails is reported in every order of the threads") {
    const auto fail = [](Machine& m) { m.FailCall("SetupCopyOEMInfW", 2, ERROR_ACCESS_DENIED); };
    Repeat(3, FiveSeconds, fail, [](const Machine& m, bool staged) {
        CHECK_FALSE(staged);
        CHECK(m.Logged("PreInstall: Message 0x7EA from thread 0x00000108"));
        CHECK(m.CallsOf("SetupCopyOEMInfW").size() == 2);
    });
}

TEST_CASE("Without a limit the first message decides, whichever thread is faster") {
    int successes = 0;
    Repeat(1, L"[INSTALL]\r\n", Nothing, [&successes](const Machine& m, bool staged) {
        CHECK(LinesOf(m, "PreInstall: Message") ==
              Lines{staged ? "PreInstall: Message 0x7EB from thread 0x00000108"
                           : "PreInstall: Message 0x7E9 from thread 0x00000104"});
        successes += staged ? 1 : 0;
    });
    // A copy that has signalled before the watchdog looks for the first time is in time.
    CHECK(successes > 0);
    CHECK(successes < static_cast<int>(Rounds));
}
