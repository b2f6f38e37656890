// Real threads for the program's. One whose work is done takes up that of the next: to make a
// thread takes longer than what most of them do.
#pragma once

#include "machine/threads/turn.h"

#include <functional>
#include <memory>

namespace machine {

struct RealThread {
    DWORD Id = 0; // as the system sees it
    std::function<void()> Work;
    Turn Begun;
    Turn Done;
};

// Waits until the work is done; then another one may have the thread.
struct RealThreadReturner {
    void operator()(RealThread* thread) const;
};
using RealThreadOwner = std::unique_ptr<RealThread, RealThreadReturner>;

// Begins the work on a thread that has nothing to do, with no last error, as on a new one. Null
// when the system refuses another thread.
RealThreadOwner StartRealThread(std::function<void()> work);

} // namespace machine
