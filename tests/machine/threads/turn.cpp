#include "machine/threads/turn.h"

namespace machine {

void Turn::Give() {
    AcquireSRWLockExclusive(&lock_);
    given_ = true;
    ReleaseSRWLockExclusive(&lock_);
    WakeConditionVariable(&changed_);
}

void Turn::Await() {
    AcquireSRWLockExclusive(&lock_);
    while (!given_) {
        SleepConditionVariableSRW(&changed_, &lock_, INFINITE, 0);
    }
    given_ = false;
    ReleaseSRWLockExclusive(&lock_);
}

} // namespace machine
