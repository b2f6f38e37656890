// A plan: what a run will do with a packet, as plain data.
#pragma once

#include "common/text.h"
#include "rehearsal/recording.h"

#include <optional>

namespace plan {

// A setting as the run reads it.
struct Setting {
    std::wstring Section; // without decorations
    std::wstring Key;
    std::wstring Value;
    // The section of Setup.ini that decided; empty when the key is absent.
    std::wstring From;
};

// An INF file of the packet.
struct Inf {
    std::wstring Name;
    // Upper-cased; empty when the INF names none.
    std::wstring ClassName;
    // Its place among the classes (see RankOfClass).
    std::uint32_t Rank = 0;
    // False when Windows' parser refuses the file.
    bool Readable = true;
    TextList Ids;
};

// Which INF of the packet a device gets.
struct Pair {
    std::wstring Id;
    std::wstring Inf; // file name
};

// How many functions a run waits for once it has found one of this device.
struct Expected {
    std::wstring BaseId;
    std::size_t Functions = 0;
    // How many of them can ever arrive: listed IDs that a device can have, each counted once.
    std::size_t Possible = 0;
};

// One line of a script section.
struct Operation {
    std::wstring Section; // the one that the line stands in
    std::wstring Key;
    std::wstring Line;
    std::wstring Filled;
    // What it does; empty for a line without effect.
    std::vector<rehearsal::Event> Effects{};
    // The log line with which the run refuses it; empty when it is carried out.
    std::wstring Refusal{};
    // The events of the recording that belong to it: from its reading up to here.
    std::size_t FirstEvent = 0;
    std::size_t EndEvent = 0;
};

struct Wait {
    std::wstring What;
    std::uint32_t Milliseconds = 0;
};

// One part of the run, in order.
struct Step {
    std::wstring Title;
    TextList Details;
};

enum class Outcome { Success, Failure, ProcessEnds, Endless };

// What is taken away in a run: by the cleanup of an install, or by an uninstall.
struct Removals {
    // IDs of the devices that are looked for.
    TextList DeviceIds;
    // Full paths, in order of deletion; files of the store as oemN.inf.
    TextList Files;
};

// One sequence of the program, played with the device plugged in and all its functions arriving.
struct Run {
    Outcome End = Outcome::Success;
    // What the log says of the failure; empty for a success.
    std::wstring Reason;
    std::vector<Setting> Settings;
    std::vector<Operation> Operations;
    Removals Gone;
    std::vector<Wait> Waits;
    std::vector<Step> Steps;
    TextList Log;
};

struct Plan {
    std::wstring Generation;
    std::wstring Folder; // of the packet, for this generation
    bool IsInstall = true;
    // [INSTALL] MODE
    std::int32_t Mode = 0;
    // In the order in which they are offered to the devices.
    std::vector<Inf> Infs;
    // File names in the order in which they are staged.
    TextList Staging;
    std::vector<Pair> Pairs;
    std::vector<Expected> ExpectedCounts;
    Run Main;
    // What undoes a failed install; nothing for an uninstall.
    std::optional<Run> Rollback;
    // What "Setup.exe -u" would do after it; nothing for an uninstall.
    std::optional<Run> Uninstall;
    // Seconds that the run takes at most, without the time that Windows itself needs; nothing when
    // it may go on without limit.
    std::optional<std::uint64_t> WorstCaseSeconds;
};

} // namespace plan
