// Memory whose overrun ends the run on the spot. Built in with GUARD_MEMORY (setup_tests_checked):
// while a machine lives, every `new` outside the machine's own work gets pages of its own, ends
// right before a page that nobody may touch, and is never handed out again after `delete`.
#pragma once

namespace machine {

// The machine's own allocations: its journal alone would use up the pages.
class UnguardedScope {
public:
    UnguardedScope();
    ~UnguardedScope();
    UnguardedScope(const UnguardedScope&) = delete;
    UnguardedScope& operator=(const UnguardedScope&) = delete;
};

// Called as machines come and go.
void GuardMemory(bool guard);

// Guards one block in seven, others in each run: enough where the same calls are repeated in
// thousands of runs, of which each would otherwise cost ten times as much. Until the machine goes.
void GuardSome();

// The k-th new(std::nothrow) from now on (from 1) gives null; 0: none.
void FailNothrowNew(int k);

} // namespace machine
