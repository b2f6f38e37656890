// The stage on which the program is rehearsed: a machine that exists only here. On it lies the
// packet, an earlier installation of the same packet left its traces, and the device is plugged in
// and delivers every function that the packet lists. Whatever the program asks for succeeds and is
// written down; nothing is done. The packet's own files are read for real, by the INF parser and
// the profile functions of the machine at hand, so that the rehearsal understands them as the run
// will.
//
// Code of the tool must not use the program's handle owners (platform/owners.h): of an inline
// function that both have, the linker keeps the program's copy, and that one leads to the stage.
#pragma once

#include "common/text.h"
#include "platform/platform.h"
#include "rehearsal/cache/file_cache.h"
#include "rehearsal/recording.h"

#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace rehearsal {

// Thrown through the program when it ends its process.
struct ProcessEnded {};
// Thrown through the program when it waits for what never comes.
struct EndlessWait {};

// Which packet, and on which machine.
struct Place {
    // The packet's folder (that of Setup.exe) as it lies here, without a final backslash.
    std::wstring Folder;
    // The folder that the program finds itself in, without a final backslash.
    std::wstring At;
    // Product version of the kernel; empty: the version cannot be read.
    std::wstring KernelVersion;
    // What has been read of the packet's files, shared by stages on which they do not change; a
    // cache of the stage's own when there is none.
    std::shared_ptr<FileCache> Files{};
};

struct StageDevice {
    std::wstring Id;
    std::wstring ClassName; // empty: none yet
    bool Present = true;

    [[nodiscard]] std::wstring InstanceId() const { return Id + L"\\1"; }
};

// An INF of the packet in the store of Windows.
struct StoreEntry {
    std::wstring Name;   // "oem1.inf"
    std::wstring Source; // full path here
};

class Stage {
public:
    explicit Stage(Place place);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    // The stage that stands now, or null. One at a time.
    static Stage* Current();

    [[nodiscard]] const Place& Where() const { return place_; }

    // Sets the scene as an earlier installation of the packet left it. The registry stays as the
    // rehearsals so far have made it.
    void SetScene();
    // The same, but with these devices instead of all that the packet lists.
    void SetScene(std::vector<StageDevice> devices);

    // Where a path that the program names really lies; empty when nothing of it exists here.
    [[nodiscard]] std::wstring RealPath(std::wstring_view path) const;

    void Write(Event event);
    // What was written since the last call of TakeEvents.
    [[nodiscard]] const std::vector<Event>& Events() const { return events_; }
    std::vector<Event> TakeEvents();

    // Time passes; ends a run that would go on without limit.
    void Pass(std::uint32_t milliseconds);

    FileCache& Files() { return *place_.Files; }

    std::vector<StageDevice> Devices;
    std::vector<StoreEntry> Store;
    // "HKEY_LOCAL_MACHINE\SOFTWARE\X|name" in upper case, and the text in it.
    std::map<std::wstring, std::wstring> Registry;
    // What the profile functions have said: a text by file, section, key and size of the buffer,
    // and a number of Setup.ini by section and key. The files do not change while the stage stands.
    std::map<std::tuple<std::wstring, std::wstring, std::wstring, DWORD>, std::wstring> KnownTexts;
    std::map<std::pair<std::wstring, std::wstring>, UINT> KnownNumbers;
    std::uint64_t Milliseconds = 0;
    // Of the staging threads.
    std::vector<std::pair<LPTHREAD_START_ROUTINE, void*>> Threads;
    std::vector<UINT> Messages;

private:
    Place place_;
    std::vector<Event> events_;
    int waits_ = 0;
};

// The Windows folder of the stage, and its store with a final backslash.
inline constexpr const wchar_t* WindowsFolderName = L"C:\\Windows";
inline constexpr const wchar_t* StoreFolder = L"C:\\Windows\\INF\\";

// An OEM INF of somebody else's. Every machine has some, and the cleanup looks into the store only
// when there is one.
inline constexpr const wchar_t* ForeignInf = L"oem0.inf";

} // namespace rehearsal
