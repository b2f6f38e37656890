#include "rules/packet.h"

#include "plan/make_plan.h"
#include "rules/inf/models_text.h"

#include "inf/driver_files.h"
#include "inf/models.h"

#include <algorithm>

namespace rules {

namespace {

// Deeper folders are nobody's packet; a link may lead round in circles.
constexpr int DeepestFolder = 8;

void ListInto(const std::wstring& folder, const std::wstring& prefix, int depth,
              std::vector<PacketFile>& files) {
    WIN32_FIND_DATAW entry{};
    HANDLE const search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..") {
            continue;
        }
        const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        files.push_back({prefix + name, isFolder,
                         (std::uint64_t{entry.nFileSizeHigh} << 32U) | entry.nFileSizeLow});
        if (isFolder && depth > 0) {
            ListInto(folder + L"\\" + name, prefix + name + L"\\", depth - 1, files);
        }
    } while (FindNextFileW(search, &entry) != FALSE);
    FindClose(search);
}

bool IsInfName(const PacketFile& file) {
    return !Contains(file.Name, L"\\") && UpperCase(file.Name).ends_with(L".INF");
}

// The files in the order in which the cleanup comes to them, with the folder of their own section.
std::vector<CopiedFile> FilesInText(const InfText& text, const std::wstring& path) {
    std::vector<CopiedFile> files;
    const TextList installs = InstallSectionsOf(ModelsOf(text), ReadBy::Program);
    for (const std::wstring& copy : CopySectionsOf(text, installs)) {
        const reading::InfSection* const section = text.Find(copy);
        if (section == nullptr) {
            continue;
        }
        std::wstring folder;
        GetDestinationDir(path, copy, folder);
        for (const reading::InfEntry& entry : section->Entries) {
            files.push_back({copy,
                             entry.Values.empty() ? std::wstring() : entry.Values.front(),
                             entry.Line,
                             {},
                             folder});
        }
    }
    return files;
}

void ReadFiles(PacketInf& inf, const std::wstring& path) {
    DriverFileList list;
    GetDriverFileList(path, list);
    inf.Files = FilesInText(inf.Text, path);
    std::size_t next = 0;
    for (CopiedFile& file : inf.Files) {
        // The cleanup passes over a file whose name is that of a folder.
        if (next < list.size() && EqualIgnoringCase(list[next][1], file.Name)) {
            file.CleanupFolder = list[next++][0];
        }
    }
}

// What the program's rooms say. `path` is the one that the program knows.
void ReadAsTheProgram(PacketInf& inf, const std::wstring& path) {
    inf.Readable = GetDeviceIDFromInf(path, inf.Ids);
    try {
        GetInfClassName(path, inf.ClassName);
    } catch (const rehearsal::ProcessEnded&) {
        inf.ClassEndsProcess = true;
    }
    try {
        ReadFiles(inf, path);
    } catch (const rehearsal::ProcessEnded&) {
        inf.FilesEndProcess = true;
        inf.Files.clear();
    }
}

PacketInf ReadInf(const std::wstring& folder, const std::wstring& generation,
                  const PacketFile& file) {
    PacketInf inf;
    inf.Name = file.Name;
    inf.Shown = generation + L"\\" + file.Name;
    inf.IsFolder = file.IsFolder;
    const std::wstring path = folder + L"\\" + inf.Shown;
    if (!inf.IsFolder) {
        inf.File = reading::ReadTextFile(path);
        inf.Text = InfText(inf.File);
    }
    ReadAsTheProgram(inf, path);
    return inf;
}

PacketGeneration ReadGeneration(const Packet& packet, const Generation& generation) {
    const std::wstring& folder = packet.Folder;
    PacketGeneration result;
    result.For = generation;
    result.Files = ListFolder(folder + L"\\" + generation.Folder(), true);
    {
        const rehearsal::Stage stage(packet.PlaceOn(generation.KernelVersion));
        for (const PacketFile& file : result.Files) {
            if (IsInfName(file)) {
                result.Infs.push_back(ReadInf(folder, generation.Folder(), file));
            }
        }
    }
    result.Install = plan::MakePlan({folder, {}, generation, true, packet.Cache});
    return result;
}

} // namespace

rehearsal::Place Packet::PlaceOn(const std::wstring& kernelVersion) const {
    return {Folder, Folder, kernelVersion, Cache};
}

std::vector<PacketFile> ListFolder(const std::wstring& folder, bool deep) {
    std::vector<PacketFile> files;
    ListInto(folder, L"", deep ? DeepestFolder : 0, files);
    return files;
}

bool HasFile(const std::vector<PacketFile>& files, std::wstring_view name) {
    return std::any_of(files.begin(), files.end(), [name](const PacketFile& file) {
        return !file.IsFolder && EqualIgnoringCase(file.Name, name);
    });
}

Packet ReadPacket(const std::wstring& folder, const std::vector<Generation>& generations) {
    Packet packet;
    packet.Folder = folder;
    packet.Entries = ListFolder(folder, false);
    packet.Settings = reading::ReadIni(folder + L"\\Setup.ini");
    packet.Language = reading::ReadIni(folder + L"\\Lang.ini");
    for (const Generation& generation : generations) {
        const std::wstring name = generation.Folder();
        const bool isThere = std::any_of(
            packet.Entries.begin(), packet.Entries.end(), [&name](const PacketFile& entry) {
                return entry.IsFolder && EqualIgnoringCase(entry.Name, name);
            });
        if (isThere) {
            packet.Generations.push_back(ReadGeneration(packet, generation));
        }
    }
    return packet;
}

} // namespace rules
