// Virtual time and the program's threads. The threads are real, but one holds the turn at a time
// and passes it on only where it waits; the clock moves only when nobody can go on without it. So
// what a test sees does not depend on the machine that runs it.
#pragma once

#include "machine/threads/real_threads.h"
#include "machine/threads/turn.h"
#include "platform/platform.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace machine {

// Ends a thread of the program where it waits.
struct ThreadAbandoned {};

struct Thread {
    enum class Phase { Ready, Running, Waiting, Ended };

    DWORD Id = 0;         // as the program sees it
    DWORD RealId = 0;     // as the system sees it
    RealThreadOwner Real; // null for the main thread
    Turn MayRun;
    LPTHREAD_START_ROUTINE Entry = nullptr;
    void* Parameter = nullptr;

    Phase Now = Phase::Ready;
    std::uint64_t Since = 0; // order of becoming ready or waiting
    std::function<bool()> CanGoOn;
    std::optional<std::int64_t> Deadline;
    bool TimedOut = false;
    bool Abandoned = false;
    bool WaitsForEver = false;

    bool HasQueue = false;
    std::deque<MSG> Queue;
    // Asked to quit: WM_QUIT comes when nothing else is left.
    std::optional<int> QuitCode;
};

class Scheduler {
public:
    Scheduler();
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    // Makes a thread that starts when it gets its turn; null when the system refuses.
    std::shared_ptr<Thread> Start(LPTHREAD_START_ROUTINE entry, void* parameter);
    Thread& Current();
    Thread& Main() { return *threads_.front(); }
    [[nodiscard]] bool OnMain() const;
    // By the id that the program sees; null when there is none.
    Thread* Find(DWORD id);

    // Waits until the condition holds; false when the deadline (virtual milliseconds) came first.
    // Throws WaitNeverEnds on the main thread, ThreadAbandoned on others.
    bool Wait(const std::string& what, const std::function<bool()>& condition,
              std::optional<std::int64_t> deadline);
    // Lets virtual time pass.
    void Sleep(const std::string& what, std::uint32_t milliseconds);
    // May pass the turn on, when shuffling is on.
    void Step();
    void Shuffle(unsigned seed);

    void LetAllFinish();
    void EndAll();
    [[nodiscard]] int Running() const;

    [[nodiscard]] std::int64_t Clock() const { return clock_; }
    void At(std::int64_t time, std::function<void()> action);
    // Virtual time after which a sleep throws StepBudgetExceeded.
    std::int64_t TimeBudget = 30LL * 24 * 3600 * 1000;
    // What ended a thread other than its own return.
    std::string Failure;
    // Set when another thread ended the process: the main thread must not go on.
    std::optional<DWORD> EndedWith;

private:
    void Run(Thread& thread);
    void RunEntry(Thread& thread);
    // Picks who goes on, moving the clock when nobody can; never null.
    Thread* Next();
    Thread* NextRunnable();
    Thread* NextDeadline();
    void RunTimeline();
    void PassTurn(Thread& from);

    std::vector<std::shared_ptr<Thread>> threads_;
    std::multimap<std::int64_t, std::function<void()>> timeline_;
    std::int64_t clock_ = 0;
    std::uint64_t sequence_ = 0;
    unsigned random_ = 0;
    bool shuffling_ = false;
};

} // namespace machine
