// A driver packet as it lies on disk and as the program reads it.
#pragma once

#include "plan/plan.h"
#include "reading/generations.h"
#include "reading/inf_text.h"
#include "reading/ini_text.h"
#include "reading/modem_description.h"
#include "rehearsal/stage.h"

#include <optional>

namespace rules {

using reading::InfText;
using reading::IniText;
using reading::ModemDescription;
using reading::TextFile;

// A file below the packet's folder for one generation.
struct PacketFile {
    std::wstring Name; // relative to that folder, with its own case: "sub\modem.sys"
    bool IsFolder = false;
    std::uint64_t Size = 0;
};

// One file that an INF copies, as the cleanup comes to it.
struct CopiedFile {
    std::wstring Section;
    std::wstring Name;
    std::size_t Line = 0;
    std::wstring CleanupFolder; // where the cleanup looks for it
    std::wstring OwnFolder;     // where the entry of its own section says it is
};

// One "*.inf" of the packet: its text, and what the program's own rooms make of it.
struct PacketInf {
    std::wstring Name;  // "modem.inf"
    std::wstring Shown; // "WIN10\modem.inf"
    bool IsFolder = false;
    TextFile File;
    InfText Text;
    // False when the system's parser refuses it.
    bool Readable = false;
    // The IDs that the program knows of it.
    TextList Ids;
    std::wstring ClassName;
    // Where the program's reading ends its process; everything read behind that is empty.
    bool ClassEndsProcess = false;
    bool FilesEndProcess = false;
    std::vector<CopiedFile> Files;
};

// The packet on one generation of Windows.
struct PacketGeneration {
    Generation For;
    std::vector<PacketFile> Files;
    // In listing order.
    std::vector<PacketInf> Infs;
    plan::Plan Install;
};

struct Packet {
    std::wstring Folder; // full, without a final backslash
    // Names in that folder.
    std::vector<PacketFile> Entries;
    IniText Settings; // Setup.ini
    IniText Language; // Lang.ini
    std::vector<PacketGeneration> Generations;
    std::optional<ModemDescription> Modem;
    // What the rehearsals have read.
    std::shared_ptr<rehearsal::FileCache> Cache = std::make_shared<rehearsal::FileCache>();

    // Where a rehearsal of it takes place.
    [[nodiscard]] rehearsal::Place PlaceOn(const std::wstring& kernelVersion) const;
};

// Reads the packet for these generations; folders that are not there are passed over.
Packet ReadPacket(const std::wstring& folder, const std::vector<Generation>& generations);

// The entries of a folder in the system's order; those of its sub-folders as well when `deep`.
std::vector<PacketFile> ListFolder(const std::wstring& folder, bool deep);

// True when the list has a file (not a folder) of this name, case ignored.
bool HasFile(const std::vector<PacketFile>& files, std::wstring_view name);

} // namespace rules
