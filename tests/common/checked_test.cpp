// The one end that a bad index has.
#include "common/checked.h"

#include "machine/machine.h"
#include "support/doctest_support.h"

#include <string>

using namespace machine;

namespace {

// The status that a bad index ends the process with; 0 when it does not end.
DWORD StatusAtIndex(const std::vector<int>& list, std::size_t index) {
    try {
        static_cast<void>(CheckedAt(list, index));
    } catch (const ProcessEnded& end) {
        return end.Status;
    }
    return 0;
}

} // namespace

TEST_CASE("An index that the list has gives its entry") {
    const Machine m;
    CHECK(CheckedAt(std::vector<int>{1, 2, 3}, 0) == 1);
    CHECK(CheckedAt(std::vector<int>{1, 2, 3}, 2) == 3);
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("An index beyond the list ends the process with 0xC0000417 and no log line") {
    const Machine m;
    CHECK(StatusAtIndex({1, 2, 3}, 3) == 0xC0000417);
    CHECK(m.Journal() == Lines{"TerminateProcess(0xC0000417)"});
}

TEST_CASE("Every index of an empty list ends the process") {
    const Machine m;
    CHECK(StatusAtIndex({}, 0) == 0xC0000417);
    CHECK(StatusAtIndex({}, static_cast<std::size_t>(-1)) == 0xC0000417);
    CHECK(m.Log() == Lines{});
}
