#include "machine/machine.h"

#include "machine/files/disk.h"
#include "machine/files/real_copies.h"
#include "machine/guarded_memory.h"
#include "machine/state.h"
#include "machine/text.h"
#include "support/program_state.h"

#include <algorithm>
#include <stdexcept>

namespace machine {

namespace {

Machine* TheMachine = nullptr;

std::wstring ExecutableFolder(const State& state) {
    return Folder(state.Executable);
}

// Default hardware IDs of "USB\VID_3A9D&PID_9001&MI_00\6&1": with the revision and without.
WideTexts HardwareIdsOf(const std::wstring& instanceId) {
    const std::wstring id = instanceId.substr(0, instanceId.rfind(L'\\'));
    const std::size_t part = std::min(id.find(L"&MI_"), id.size());
    return {id.substr(0, part) + L"&REV_0100" + id.substr(part), id};
}

template <typename Keep>
Lines Select(const std::vector<Entry>& entries, Keep keep) {
    Lines lines;
    for (const Entry& entry : entries) {
        if (keep(entry)) {
            lines.push_back(entry.Text);
        }
    }
    return lines;
}

std::wstring NextOemName(const State& state) {
    for (int number = 0;; ++number) {
        const std::wstring name = L"oem" + std::to_wstring(number) + L".inf";
        if (!Exists(state, state.WindowsFolder + L"\\INF\\" + name)) {
            return name;
        }
    }
}

} // namespace

State* Inside() {
    return TheMachine == nullptr ? nullptr : &TheMachine->Inside();
}

void Misuse(State& state, const std::string& text) {
    state.Record.Misuses.push_back(text);
}

Machine* Machine::Current() {
    return TheMachine;
}

Machine::Machine() : state_(std::make_unique<State>()) {
    if (TheMachine != nullptr) {
        throw std::logic_error("two machines at a time");
    }
    FurnishDisk(*state_);
    TheMachine = this;
    ResetProgramState();
    GuardMemory(true);
}

Machine::~Machine() {
    GuardMemory(false);
    FailNothrowNew(0);
    EndThreads();
    TheMachine = nullptr;
}

void Machine::SetExecutable(const std::wstring& path) {
    state_->Executable = path;
}
void Machine::SetWindowsVersion(std::optional<std::wstring> version) {
    state_->Version = std::move(version);
}
void Machine::SetArchitecture(WORD architecture) {
    state_->Architecture = architecture;
}
void Machine::SetWindowsFolder(const std::wstring& path) {
    state_->WindowsFolder = path;
    state_->Files.MakeFolders(path + L"\\INF");
}
Variants& Machine::Windows() {
    return state_->Windows;
}
UINT Machine::ErrorMode() const {
    return state_->ErrorMode;
}

void Machine::WriteIni(std::wstring_view text) {
    WriteText(ExecutableFolder(*state_) + L"Setup.ini", text);
}
void Machine::WriteLang(std::wstring_view text) {
    WriteText(ExecutableFolder(*state_) + L"Lang.ini", text);
}
void Machine::WriteIniBytes(std::string_view bytes) {
    WriteBytes(ExecutableFolder(*state_) + L"Setup.ini", bytes);
}
std::wstring Machine::AddInf(const std::wstring& relativePath, const Inf& inf) {
    return AddInf(relativePath, inf.Text());
}
std::wstring Machine::AddInf(const std::wstring& relativePath, std::wstring_view text) {
    const std::wstring path = ExecutableFolder(*state_) + relativePath;
    WriteText(path, text);
    return path;
}
std::wstring Machine::AddOemInf(const Inf& inf, const std::wstring& name) {
    const UnguardedScope unguarded;
    const std::wstring path =
        state_->WindowsFolder + L"\\INF\\" + (name.empty() ? NextOemName(*state_) : name);
    WriteText(path, inf.Text());
    WriteBytes(path.substr(0, path.rfind(L'.')) + L".PNF", "precompiled");
    return path;
}
void Machine::WriteText(const std::wstring& path, std::wstring_view text) {
    machine::WriteText(*state_, path, text);
}
void Machine::WriteBytes(const std::wstring& path, std::string_view bytes) {
    machine::WriteBytes(*state_, path, bytes);
}
void Machine::MakeFolder(const std::wstring& path) {
    state_->Files.MakeFolders(path);
}
void Machine::RemoveFile(const std::wstring& path) {
    machine::RemoveFile(*state_, path);
}
bool Machine::Exists(const std::wstring& path) const {
    return machine::Exists(*state_, path);
}
std::string Machine::ReadBytes(const std::wstring& path) const {
    return machine::ReadBytes(*state_, path);
}
WideTexts Machine::Files(const std::wstring& folder) const {
    return state_->Files.FilesBelow(folder);
}
void Machine::LockFile(const std::wstring& path) {
    state_->LockedFiles.insert(Lower(path));
}
void Machine::SetListingOrder(const std::wstring& folder, const WideTexts& names) {
    state_->ListingOrders[Lower(folder.back() == L'\\' ? folder : folder + L"\\")] = names;
}
void Machine::SetAttributes(const std::wstring& path, DWORD attributes) {
    FileEntry* file = state_->Files.Find(path);
    if (file == nullptr) {
        throw std::runtime_error("no file " + Utf8(path));
    }
    file->Attributes = attributes;
}
std::wstring Machine::RealCopy(const std::wstring& path) const {
    return RealCopyOf(machine::ReadBytes(*state_, path));
}

Device& Machine::AddDevice(Device device) {
    const UnguardedScope unguarded;
    if (device.HardwareIds.empty() && device.HasHardwareIds) {
        device.HardwareIds = HardwareIdsOf(device.InstanceId);
    }
    const DWORD devInst = device.HasDevInst ? 0x1000 + static_cast<DWORD>(state_->Nodes.size()) : 0;
    state_->Nodes.push_back({std::move(device), devInst});
    return state_->Nodes.back().Description;
}
Device& Machine::At(const std::wstring& instanceId) {
    Node* node = FindNode(*state_, instanceId);
    if (node == nullptr) {
        throw std::runtime_error("no device " + Utf8(instanceId));
    }
    return node->Description;
}
const Device& Machine::At(const std::wstring& instanceId) const {
    const Node* node = FindNode(*state_, instanceId);
    if (node == nullptr) {
        throw std::runtime_error("no device " + Utf8(instanceId));
    }
    return node->Description;
}
bool Machine::HasDevice(const std::wstring& instanceId) const {
    const Node* node = FindNode(*state_, instanceId);
    return node != nullptr && !node->Description.Removed;
}
void Machine::Arrive(const std::wstring& instanceId) {
    At(instanceId).Present = true;
}
void Machine::Leave(const std::wstring& instanceId) {
    At(instanceId).Present = false;
}
const std::vector<Order>& Machine::Orders() const {
    return state_->Orders;
}
void Machine::AnswerInstall(InstallAnswer answer) {
    state_->InstallAnswers.push_back(std::move(answer));
}

void Machine::CopyTakes(int n, Duration time) {
    state_->InfStore.CopyTimes[n] = time;
}
void Machine::CopyHangs(int n) {
    state_->InfStore.HangingCopies.insert(n);
}
void Machine::ReleaseHungCopies() {
    state_->InfStore.HangingCopies.clear();
}
void Machine::PendingInstallationsTake(Duration time) {
    state_->InfStore.PendingTime = time;
}

Service& Machine::AddService(Service service) {
    state_->DriverServices.All.push_back(std::move(service));
    return state_->DriverServices.All.back();
}
void Machine::SizeQueryMovesOn() {
    state_->DriverServices.SizeQueryMovesOn = true;
}
Service& Machine::ServiceAt(const std::wstring& name) {
    for (Service& service : state_->DriverServices.All) {
        if (SameText(service.Name, name)) {
            return service;
        }
    }
    throw std::runtime_error("no service " + Utf8(name));
}

void Machine::SetCalendar(std::uint64_t fileTime) {
    state_->StartTime = fileTime;
}
Duration Machine::Now() const {
    return Duration(state_->Threads.Clock());
}
void Machine::After(Duration time, Action action) {
    state_->Threads.At(time.count(), std::move(action));
}
void Machine::Arrives(const std::wstring& instanceId, Duration time) {
    After(time, [this, instanceId] { Arrive(instanceId); });
}
void Machine::Leaves(const std::wstring& instanceId, Duration time) {
    After(time, [this, instanceId] { Leave(instanceId); });
}
void Machine::AtReenumeration(int n, Action action) {
    state_->AtReenumeration[n].push_back(std::move(action));
}
void Machine::AfterOrder(Duration delay, Action action) {
    state_->AfterOrder.emplace_back(delay, std::move(action));
}
void Machine::BeforeCall(const std::string& function, int k, Action action) {
    state_->Record.Before[{function, k}].push_back(std::move(action));
}
void Machine::AfterCall(const std::string& function, int k, Action action) {
    state_->Record.After[{function, k}].push_back(std::move(action));
}
void Machine::LetTimePass(Duration time) {
    state_->Threads.Sleep("LetTimePass", static_cast<std::uint32_t>(time.count()));
}

void Machine::ShuffleThreads(unsigned seed) {
    state_->Threads.Shuffle(seed);
}
void Machine::LetThreadsFinish() {
    state_->Threads.LetAllFinish();
}
void Machine::EndThreads() {
    state_->Threads.EndAll();
}
int Machine::RunningThreads() const {
    return state_->Threads.Running();
}
void Machine::PostMessageToMain(UINT message, WPARAM wParam, LPARAM lParam) {
    MSG posted{};
    posted.message = message;
    posted.wParam = wParam;
    posted.lParam = lParam;
    state_->Threads.Main().Queue.push_back(posted);
}
std::vector<UINT> Machine::UnreadMessages() const {
    std::vector<UINT> messages;
    for (const MSG& message : state_->Threads.Main().Queue) {
        messages.push_back(message.message);
    }
    return messages;
}
std::string Machine::ThreadFailure() const {
    return state_->Threads.Failure;
}

void Machine::LoggingLeavesError(DWORD error) {
    state_->ErrorAfterLogging = error;
}

const Window& Machine::WindowOf(HWND dialog) const {
    return state_->Screen.Dialogs.at(dialog);
}
HWND Machine::LastDialog() const {
    return state_->Screen.Last;
}
void Machine::HasNoDesktop() {
    state_->Screen.Missing = true;
}
const std::vector<Message>& Machine::Messages() const {
    return state_->Screen.Shown;
}

Lines Machine::Journal() const {
    return Select(state_->Record.Entries, [](const Entry&) { return true; });
}
Lines Machine::Log() const {
    Lines lines =
        Select(state_->Record.Entries, [](const Entry& entry) { return entry.Function.empty(); });
    for (std::string& line : lines) {
        line.erase(0, 4);
    }
    return lines;
}
Lines Machine::Calls() const {
    return Select(state_->Record.Entries,
                  [](const Entry& entry) { return !entry.Function.empty(); });
}
Lines Machine::CallsOf(std::string_view function) const {
    return Select(state_->Record.Entries,
                  [function](const Entry& entry) { return entry.Function == function; });
}
Lines Machine::Story() const {
    return Select(state_->Record.Entries, [](const Entry& entry) { return entry.InStory; });
}
bool Machine::Logged(std::string_view line) const {
    const Lines log = Log();
    return std::find(log.begin(), log.end(), line) != log.end();
}
void Machine::ForgetJournal() {
    state_->Record.Entries.clear();
}

void Machine::FailCall(const std::string& function, int k, DWORD error) {
    state_->Record.Faults.push_back({function, k, false, error});
}
void Machine::FailCallsFrom(const std::string& function, int k, DWORD error) {
    state_->Record.Faults.push_back({function, k, true, error});
}
void Machine::FailAnyCall(int k, DWORD error) {
    state_->Record.FailAt[k] = error;
}
void Machine::FailCallsAtRandom(unsigned seed, unsigned perMille, std::vector<DWORD> errors) {
    state_->Record.Chance = {seed, perMille, std::move(errors)};
}
void Machine::CountSettingsToo() {
    state_->Record.SettingsCount = true;
}
int Machine::CountedCalls() const {
    return state_->Record.Counted;
}
std::string Machine::FailedCall() const {
    return state_->Record.Failed.empty() ? std::string() : state_->Record.Failed.front();
}
const Lines& Machine::FailedCalls() const {
    return state_->Record.Failed;
}
void Machine::SetStepBudget(std::int64_t calls, std::chrono::hours virtualTime) {
    state_->Record.StepBudget = calls;
    state_->Threads.TimeBudget = Duration(virtualTime).count();
}

std::string Machine::LeakSummary() const {
    return state_->Handles.Summary();
}
int Machine::Open(std::string_view kind) const {
    int count = 0;
    for (const auto& [value, handle] : state_->Handles.All()) {
        count += kind == NameOf(handle.What) ? 1 : 0;
    }
    return count;
}
const Lines& Machine::Misuses() const {
    return state_->Record.Misuses;
}

FILETIME TimeNow(const State& state) {
    ULARGE_INTEGER time{};
    time.QuadPart = state.StartTime + static_cast<ULONGLONG>(state.Threads.Clock()) * 10'000U;
    return {time.LowPart, time.HighPart};
}

std::wstring SystemFolder(const State& state) {
    return state.WindowsFolder + L"\\System32";
}

Node* FindNode(State& state, std::wstring_view instanceId) {
    for (Node& node : state.Nodes) {
        if (SameText(node.Description.InstanceId, instanceId)) {
            return &node;
        }
    }
    return nullptr;
}

} // namespace machine
