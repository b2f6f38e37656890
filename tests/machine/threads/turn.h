// What one thread waits for and another one gives. An event of the system does the same, but under
// Wine each use of one is a request to its server, and a run passes the turn a hundred times.
#pragma once

#include "platform/platform.h"

namespace machine {

class Turn {
public:
    void Give();
    // Takes it, once it is given.
    void Await();

private:
    SRWLOCK lock_ = SRWLOCK_INIT;
    CONDITION_VARIABLE changed_ = CONDITION_VARIABLE_INIT;
    bool given_ = false;
};

} // namespace machine
