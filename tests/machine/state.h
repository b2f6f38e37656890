// The machine's inside, shared by its facade and its hooks. Tests do not include this.
#pragma once

#include "machine/files/file_tree.h"
#include "machine/handles.h"
#include "machine/machine.h"
#include "machine/registry_tree.h"
#include "machine/threads/scheduler.h"

#include <deque>
#include <set>

namespace machine {

// One line of the journal.
struct Entry {
    std::string Text;
    std::string Function; // empty: a log line
    bool InStory = true;
};

// A failure that the test ordered for one function.
struct OrderedFailure {
    std::string Function;
    int Call = 0;
    bool AndLater = false;
    DWORD Error = 0;
};

// Failures of counted calls by chance.
struct RandomFailures {
    unsigned Random = 0;
    unsigned PerMille = 0;
    std::vector<DWORD> Errors;

    // The error of the next call, 0 for none.
    DWORD Next();
};

// What the journal and the injected failures keep.
struct Recording {
    std::vector<Entry> Entries;
    std::map<std::string, int, std::less<>> CallCounts;
    std::vector<OrderedFailure> Faults;
    std::map<int, DWORD> FailAt; // errors of counted calls
    RandomFailures Chance;
    Lines Failed;
    int Counted = 0;
    bool SettingsCount = false;
    std::int64_t Steps = 0;
    std::int64_t StepBudget = 2'000'000;
    std::map<std::pair<std::string, int>, std::vector<Action>> Before;
    std::map<std::pair<std::string, int>, std::vector<Action>> After;
    Lines Misuses;
};

// A device node and what the system keeps about it.
struct Node {
    Device Description;
    DWORD DevInst = 0;
};

struct Store {
    int Copies = 0; // SetupCopyOEMInfW calls so far
    std::map<int, Duration> CopyTimes;
    std::set<int> HangingCopies;
    // Names that staged INFs had before: "oem0.inf" -> "modem.inf".
    std::map<std::wstring, std::wstring> OriginalNames;
    Duration PendingTime{0};
};

struct Services {
    std::deque<Service> All;
    bool SizeQueryMovesOn = false;
};

struct Desktop {
    std::map<HWND, Window> Dialogs;
    HWND Last = nullptr;
    bool Missing = false;
    std::vector<Message> Shown;
};

struct State {
    std::wstring Executable = L"D:\\Packet\\Setup.exe";
    std::wstring WindowsFolder = L"C:\\Windows";
    std::optional<std::wstring> Version = L"6.1.7601.17514";
    WORD Architecture = PROCESSOR_ARCHITECTURE_AMD64;
    UINT ErrorMode = 0;
    // 2026-01-05 08:00 UTC.
    std::uint64_t StartTime = 134'120'448'000'000'000ULL;
    Variants Windows = Variants::FromEnvironment();

    FileTree Files;
    OpenRegistryKey LocalMachine;
    OpenRegistryKey CurrentUser;
    std::set<std::wstring> LockedFiles;
    std::map<std::wstring, WideTexts> ListingOrders;

    std::deque<Node> Nodes;
    std::vector<Order> Orders;
    std::vector<Machine::InstallAnswer> InstallAnswers;
    std::map<int, std::vector<Action>> AtReenumeration;
    int Reenumerations = 0;
    std::vector<std::pair<Duration, Action>> AfterOrder;

    std::optional<DWORD> ErrorAfterLogging;

    Store InfStore;
    Services DriverServices;
    Desktop Screen;
    Recording Record;
    HandleTable Handles;
    Scheduler Threads;
};

// The state of the living machine, or null: the program's static objects outlive every machine.
State* Inside();

// The calendar time.
FILETIME TimeNow(const State& state);
// "C:\\Windows\\System32".
std::wstring SystemFolder(const State& state);
Node* FindNode(State& state, std::wstring_view instanceId);
void Misuse(State& state, const std::string& text);

} // namespace machine
