// The simulated Windows that the program's calls arrive at while a Machine lives. A test describes
// it in a few lines, runs the program's own functions, and asks what happened.
//
// What is simulated: files, the registry, devices and their drivers, the INF store, services, the
// clock, threads' waiting and messages, windows, the maker's two libraries. What stays real: the
// reading of profile files and INFs (on real copies), thread objects.
//
// Texts that go into the machine are wide, as Windows has them; the journal is UTF-8.
#pragma once

#include "machine/description.h"
#include "machine/variants.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string_view>

namespace machine {

using Lines = std::vector<std::string>;
using Action = std::function<void()>;
using Duration = std::chrono::milliseconds;
using namespace std::chrono_literals;

// Thrown through the program by TerminateProcess on the own process.
struct ProcessEnded {
    DWORD Status;
};
// Thrown when a run makes too many calls or lets too much virtual time pass.
struct StepBudgetExceeded {
    std::string Call;
};
// Thrown on the main thread when it waits for what neither a thread nor the clock will ever bring.
struct WaitNeverEnds {
    std::string Call;
};

// The id that the program sees for the main thread; its further threads get the next multiples
// of 4.
constexpr DWORD MainThread = 0x100;

// As the error of a call that is to fail: it fails and leaves the last error as it was.
constexpr DWORD ErrorAsBefore = 0xFFFFFFFF;

struct State;

class Machine {
public:
    // Windows 7 x64, D:\Packet\Setup.exe, no devices, an INF store with usb.inf only. Resets the
    // program's process-wide state. One at a time, on the test's main thread.
    Machine();
    // Ends the program's threads.
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // --- the program's surroundings -------------------------------------------------------------
    void SetExecutable(const std::wstring& path);
    // ProductVersion of ntoskrnl.exe; nothing: the file has no version resource.
    void SetWindowsVersion(std::optional<std::wstring> version);
    void SetArchitecture(WORD architecture);
    void SetWindowsFolder(const std::wstring& path);
    // What the program last told SetErrorMode; 0 at first.
    [[nodiscard]] UINT ErrorMode() const;
    // What differs between versions of Windows; at first what SETUP_TESTS_WINDOWS says.
    Variants& Windows();
    // Full paths of the libraries that the program has loaded, in order. By a name alone, the one
    // beside the executable wins over the system's.
    [[nodiscard]] WideTexts LoadedLibraries() const;

    // --- files (on simulated drives; "D:\\Packet\\a.txt") ----------------------------------------
    // Setup.ini, Lang.ini beside the executable, as UTF-16 with a byte order mark.
    void WriteIni(std::wstring_view text);
    void WriteLang(std::wstring_view text);
    void WriteIniBytes(std::string_view bytes);
    // An INF of the driver packet, relative to the executable's folder ("WIN7\\modem.inf"). Returns
    // its full path.
    std::wstring AddInf(const std::wstring& relativePath, const Inf& inf);
    std::wstring AddInf(const std::wstring& relativePath, std::wstring_view text);
    // An INF and its PNF in the store. Returns the full path; without a name, the next oemN.inf.
    std::wstring AddOemInf(const Inf& inf, const std::wstring& name = {});
    // UTF-16 with a byte order mark; folders are made as needed.
    void WriteText(const std::wstring& path, std::wstring_view text);
    void WriteBytes(const std::wstring& path, std::string_view bytes);
    void MakeFolder(const std::wstring& path);
    void RemoveFile(const std::wstring& path);
    [[nodiscard]] bool Exists(const std::wstring& path) const;
    [[nodiscard]] std::string ReadBytes(const std::wstring& path) const;
    // Every file of the drive or folder, full paths in alphabetical order.
    [[nodiscard]] WideTexts Files(const std::wstring& folder) const;
    // Deleting or overwriting the file fails with ERROR_SHARING_VIOLATION.
    void LockFile(const std::wstring& path);
    // The order in which the folder's listing gives these names (those not named follow). Without
    // it: alphabetical, the case ignored, as NTFS does it.
    void SetListingOrder(const std::wstring& folder, const WideTexts& names);
    // FILE_ATTRIBUTE_READONLY ... of a file that is there.
    void SetAttributes(const std::wstring& path, DWORD attributes);
    // A real file with the same content, to ask the real system about.
    [[nodiscard]] std::wstring RealCopy(const std::wstring& path) const;

    // --- registry ("HKEY_LOCAL_MACHINE\\SOFTWARE\\X") --------------------------------------------
    void SetRegistryText(const std::wstring& key, const std::wstring& name,
                         const std::wstring& text);
    void MakeRegistryKey(const std::wstring& key);
    [[nodiscard]] bool RegistryKeyExists(const std::wstring& key) const;
    [[nodiscard]] bool RegistryValueExists(const std::wstring& key, const std::wstring& name) const;
    [[nodiscard]] std::wstring RegistryText(const std::wstring& key,
                                            const std::wstring& name) const;
    [[nodiscard]] DWORD RegistryType(const std::wstring& key, const std::wstring& name) const;
    [[nodiscard]] std::string RegistryBytes(const std::wstring& key,
                                            const std::wstring& name) const;

    // --- devices --------------------------------------------------------------------------------
    // The reference stays valid as long as the machine. Devices enumerate in the order of their
    // IDs, whichever was added first.
    Device& AddDevice(Device device);
    // The device, case of its instance ID ignored; ends the test when there is none.
    Device& At(const std::wstring& instanceId);
    [[nodiscard]] const Device& At(const std::wstring& instanceId) const;
    [[nodiscard]] bool HasDevice(const std::wstring& instanceId) const;
    // Plug and unplug now.
    void Arrive(const std::wstring& instanceId);
    void Leave(const std::wstring& instanceId);
    // Orders that device interfaces received (DeviceIoControl).
    [[nodiscard]] const std::vector<Order>& Orders() const;
    // What UpdateDriverForPlugAndPlayDevicesW and InstallSelectedDriver answer: `error` 0 =
    // success. Empty id or infName (file name) = any. `times` answers, then the next rule. Without
    // a rule both behave as Windows does.
    struct InstallAnswer {
        std::wstring Id{};
        std::wstring InfName{};
        DWORD Error = 0;
        DWORD Reboot = 0;
        int Times = 1'000'000;
    };
    void AnswerInstall(InstallAnswer answer);

    // --- INF store ------------------------------------------------------------------------------
    // The n-th SetupCopyOEMInfW (from 1): takes this much virtual time; hangs until released.
    void CopyTakes(int n, Duration time);
    void CopyHangs(int n);
    void ReleaseHungCopies();
    // Pending installations: how long CMP_WaitNoPendingInstallEvents takes each time.
    void PendingInstallationsTake(Duration time);

    // --- services -------------------------------------------------------------------------------
    Service& AddService(Service service);
    Service& ServiceAt(const std::wstring& name);
    // A listing of the services for which there is no room at all leaves a place behind the last
    // one to go on from; otherwise it leaves the first.
    void SizeQueryMovesOn();

    // --- clock and timeline ---------------------------------------------------------------------
    // The calendar time at which the machine is made, in units of 100 nanoseconds since 1601.
    void SetCalendar(std::uint64_t fileTime);
    // Virtual time since the machine was made.
    [[nodiscard]] Duration Now() const;
    // Runs the action when the virtual clock gets there.
    void After(Duration time, Action action);
    void Arrives(const std::wstring& instanceId, Duration time);
    void Leaves(const std::wstring& instanceId, Duration time);
    // At the n-th re-enumeration of the device tree (from 1).
    void AtReenumeration(int n, Action action);
    // Whenever a device interface has received an order: `delay` later.
    void AfterOrder(Duration delay, Action action);
    // Right before or after the k-th call of the function (from 1). The action runs outside the
    // program: it may change the machine, not call the program.
    void BeforeCall(const std::string& function, int k, Action action);
    void AfterCall(const std::string& function, int k, Action action);
    // Lets virtual time pass for the program's other threads and the timeline.
    void LetTimePass(Duration time);

    // --- threads --------------------------------------------------------------------------------
    // The program's threads are real but run one at a time: a thread runs until it waits or ends,
    // so a journal is the same in every run. With a seed, any call may pass the turn to another
    // thread instead: another order per seed, again the same in every run.
    void ShuffleThreads(unsigned seed);
    // Lets the program's threads run until all have ended or wait for ever.
    void LetThreadsFinish();
    // Ends the program's threads where they wait (their owners close what they hold).
    void EndThreads();
    [[nodiscard]] int RunningThreads() const;
    // Posts a message to the main thread's queue as a foreign sender would. WM_QUIT makes
    // GetMessage return 0.
    void PostMessageToMain(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    // Messages that nobody has fetched from the main thread's queue.
    [[nodiscard]] std::vector<UINT> UnreadMessages() const;
    // Text of an exception that ended a thread of the program; empty when none did.
    [[nodiscard]] std::string ThreadFailure() const;

    // --- the maker's libraries -----------------------------------------------------------------
    // From now on each line that is logged leaves this last error; the maker's own library may.
    void LoggingLeavesError(DWORD error);

    // --- windows --------------------------------------------------------------------------------
    // A dialog window for driving a dialog procedure directly.
    HWND NewDialog();
    [[nodiscard]] const Window& WindowOf(HWND dialog) const;
    // The dialog that DialogBoxParamW opened last; null when there is none.
    [[nodiscard]] HWND LastDialog() const;
    // DialogBoxParamW returns -1, as without a desktop.
    void HasNoDesktop();
    [[nodiscard]] const std::vector<Message>& Messages() const;

    // --- journal --------------------------------------------------------------------------------
    // Everything in order: "SetupDiGetClassDevsW(null, USB, 0x4)", "LOG UpdateInstall: ...". A call
    // that an injected failure met ends in " -> fails 0x00000005".
    [[nodiscard]] Lines Journal() const;
    // The log lines only, without the "LOG " in front.
    [[nodiscard]] Lines Log() const;
    // Calls only.
    [[nodiscard]] Lines Calls() const;
    [[nodiscard]] Lines CallsOf(std::string_view function) const;
    // Log lines and the calls that ask or change devices, drivers, services, the clock, threads,
    // windows, files and registry; without the settings read (profile files, version, paths), the
    // INF parser's calls and the closing of handles.
    [[nodiscard]] Lines Story() const;
    [[nodiscard]] bool Logged(std::string_view line) const;
    void ForgetJournal();

    // --- failures -------------------------------------------------------------------------------
    // The k-th call (from 1) of the function fails with this last error, in the function's own way.
    void FailCall(const std::string& function, int k, DWORD error);
    // From the k-th call on, every call of the function fails.
    void FailCallsFrom(const std::string& function, int k, DWORD error);
    // The k-th of all calls that can fail. Closing, sleeping, logging and asking for ids cannot;
    // the reading of settings counts only when told so.
    void FailAnyCall(int k, DWORD error); // may be said for several
    // Each of all calls that can fail does so with a chance of so many in a thousand and one of the
    // errors; the same ones for the same seed.
    void FailCallsAtRandom(unsigned seed, unsigned perMille, std::vector<DWORD> errors);
    void CountSettingsToo();
    // Calls that can fail, so far.
    [[nodiscard]] int CountedCalls() const;
    // The function whose call these hit first, empty when the run was shorter; all of them.
    [[nodiscard]] std::string FailedCall() const;
    [[nodiscard]] const Lines& FailedCalls() const;
    void SetStepBudget(std::int64_t calls, std::chrono::hours virtualTime);

    // --- what is left over ----------------------------------------------------------------------
    // Handles still open by kind, as "2 set, 1 inf"; empty when nothing is. Loaded libraries do not
    // count: the program keeps them until its process ends.
    [[nodiscard]] std::string LeakSummary() const;
    // By kind: "set", "inf", "library", "find", "file", "device", "semaphore", "thread", "key",
    // "service", "manager".
    [[nodiscard]] int Open(std::string_view kind) const;
    // Closed or foreign handles that were used, driver lists enumerated unbuilt, ...; empty = none.
    [[nodiscard]] const Lines& Misuses() const;

    // The machine's inside, for its hooks.
    State& Inside() { return *state_; }

    // The machine that lives now, or null.
    static Machine* Current();

private:
    std::unique_ptr<State> state_;
};

} // namespace machine
