// The folders of the packet.
#include "rules/families.h"
#include "rules/near_name.h"

#include <algorithm>
#include <array>

namespace rules {

namespace {

bool HasInfs(const std::vector<PacketFile>& files) {
    return std::any_of(files.begin(), files.end(), [](const PacketFile& file) {
        return !file.IsFolder && UpperCase(file.Name).ends_with(L".INF");
    });
}

TextList FolderNames() {
    TextList names;
    for (const Generation& generation : AllGenerations()) {
        names.push_back(generation.Folder());
    }
    return names;
}

// The name without what people put between its parts.
std::wstring Plain(std::wstring_view name) {
    std::wstring plain;
    for (const wchar_t letter : UpperCase(name)) {
        if (letter != L' ' && letter != L'_' && letter != L'-' && letter != L'.') {
            plain += letter;
        }
    }
    return plain;
}

// The folder that is meant by a name that is none; empty when nothing comes near.
std::wstring MeantFolder(const std::wstring& name) {
    static constexpr std::array<std::pair<std::wstring_view, std::wstring_view>, 22> Aliases{{
        {L"WIN8", L"WIN10"},        {L"WIN81", L"WIN10"},      {L"WIN11", L"WIN10"},
        {L"WIN864", L"WIN10"},      {L"WIN1064", L"WIN10"},    {L"WIN1164", L"WIN10"},
        {L"WIN10X64", L"WIN10"},    {L"WIN11X64", L"WIN10"},   {L"WINDOWS10", L"WIN10"},
        {L"WINDOWS11", L"WIN10"},   {L"WINDOWS8", L"WIN10"},   {L"WIN764", L"WIN7"},
        {L"WIN7X64", L"WIN7"},      {L"WINDOWS7", L"WIN7"},    {L"VISTA", L"VISTA64"},
        {L"VISTAX64", L"VISTA64"},  {L"WINVISTA", L"VISTA64"}, {L"WINXP", L"WINXP64"},
        {L"XP", L"WINXP64"},        {L"XP64", L"WINXP64"},     {L"WINXPX64", L"WINXP64"},
        {L"WINDOWSXP", L"WINXP64"},
    }};
    const std::wstring plain = Plain(name);
    for (const auto& [alias, folder] : Aliases) {
        if (plain == alias) {
            return std::wstring(folder);
        }
    }
    return NearestName(plain, FolderNames());
}

void CheckMisspelt(const Packet& packet, Findings& findings) {
    const TextList names = FolderNames();
    for (const PacketFile& entry : packet.Entries) {
        if (!entry.IsFolder || ListHolds(names, entry.Name)) {
            continue;
        }
        const std::wstring meant = MeantFolder(entry.Name);
        if (!meant.empty() && HasInfs(ListFolder(packet.Folder + L"\\" + entry.Name, true))) {
            findings.push_back({RuleId::GenerationFolderMisspelt,
                                {entry.Name, 0},
                                L"the folder is never looked for; " + meant + L" is"});
        }
    }
}

bool IsServed(const Packet& packet, const std::wstring& folder) {
    return std::any_of(packet.Entries.begin(), packet.Entries.end(), [&](const auto& entry) {
        return entry.IsFolder && EqualIgnoringCase(entry.Name, folder);
    });
}

void CheckServed(const Packet& packet, Findings& findings) {
    std::wstring missing;
    bool any = false;
    for (const Generation& generation : AllGenerations()) {
        if (IsServed(packet, generation.Folder())) {
            any = true;
        } else if (!generation.KernelVersion.empty()) {
            missing += (missing.empty() ? L"" : L", ") + generation.Folder();
        }
    }
    if (!any) {
        findings.push_back(
            {RuleId::NoGenerationFolder, {L"", 0}, L"none of the folders is there: " + missing});
    } else if (!missing.empty()) {
        findings.push_back({RuleId::GenerationNotServed, {L"", 0}, L"no folder " + missing});
    }
}

TextList AllIds(const PacketGeneration& generation) {
    TextList ids;
    for (const PacketInf& inf : generation.Infs) {
        for (const std::wstring& id : inf.Ids) {
            AppendDistinct(ids, id);
        }
    }
    return ids;
}

void CheckDifferences(const Packet& packet, Findings& findings) {
    TextList everywhere;
    for (const PacketGeneration& generation : packet.Generations) {
        for (const std::wstring& id : AllIds(generation)) {
            AppendDistinct(everywhere, id);
        }
    }
    for (const PacketGeneration& generation : packet.Generations) {
        const TextList known = AllIds(generation);
        for (const std::wstring& id : everywhere) {
            // A folder without any INF is told of by itself.
            if (!generation.Infs.empty() && !ListHolds(known, id)) {
                findings.push_back({RuleId::GenerationsDiffer,
                                    {generation.For.Folder(), 0},
                                    id + L" is listed for another Windows only"});
            }
        }
    }
}

void CheckOneFolder(const PacketGeneration& generation, Findings& findings) {
    const std::wstring folder = generation.For.Folder();
    if (generation.Infs.empty()) {
        findings.push_back({RuleId::GenerationWithoutInf, {folder, 0}, L"there is no INF in it"});
    }
    for (const PacketFile& file : generation.Files) {
        if (!file.IsFolder && Contains(file.Name, L"\\") &&
            UpperCase(file.Name).ends_with(L".INF")) {
            findings.push_back({RuleId::InfInSubfolder,
                                {folder + L"\\" + file.Name, 0},
                                L"the INF lies in a subfolder"});
        }
    }
}

void CheckPaths(const Packet& packet, const PacketGeneration& generation, Findings& findings) {
    // A program's folder of a usual length must still fit in front.
    constexpr std::size_t LongestRelative = 180;
    constexpr std::size_t Longest = 259;
    for (const PacketFile& file : generation.Files) {
        const std::wstring shown = generation.For.Folder() + L"\\" + file.Name;
        if (!file.IsFolder &&
            (shown.size() > LongestRelative || packet.Folder.size() + 1 + shown.size() > Longest)) {
            findings.push_back({RuleId::PathTooLong,
                                {shown, 0},
                                std::to_wstring(packet.Folder.size() + 1 + shown.size()) +
                                    L" characters where it lies now"});
        }
    }
}

} // namespace

void CheckFolders(const Packet& packet, Findings& findings) {
    CheckServed(packet, findings);
    CheckMisspelt(packet, findings);
    CheckDifferences(packet, findings);
    for (const PacketGeneration& generation : packet.Generations) {
        CheckOneFolder(generation, findings);
        CheckPaths(packet, generation, findings);
    }
    if (!packet.Settings.File.Exists()) {
        findings.push_back({RuleId::SettingsMissing, {L"Setup.ini", 0}, L"there is no Setup.ini"});
    }
}

} // namespace rules
