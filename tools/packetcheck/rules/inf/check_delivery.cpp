// What an INF says of itself, and whether what it names is in the packet.
#include "rules/families.h"
#include "rules/inf/models_text.h"
#include "rules/inf/windows_files.h"

#include <algorithm>

namespace rules {

namespace {

using reading::InfEntry;
using reading::InfText;

std::wstring Value(const InfEntry& entry, std::size_t index) {
    return index < entry.Values.size() ? entry.Values[index] : std::wstring();
}

// The line of a key in [Version]; that of the section without the key, 0 without the section.
std::size_t VersionLine(const PacketInf& inf, std::wstring_view key) {
    const auto entries = inf.Text.Entries(L"Version", key);
    if (!entries.empty()) {
        return entries.front()->Line;
    }
    const reading::InfSection* const section = inf.Text.Find(L"Version");
    return section == nullptr ? 0 : section->Line;
}

// The entry that names the catalog for 64-bit Windows; null when there is none.
const InfEntry* CatalogEntry(const InfText& inf) {
    for (const std::wstring_view key :
         {L"CatalogFile.NTamd64", L"CatalogFile.NT", L"CatalogFile"}) {
        const auto entries = inf.Entries(L"Version", key);
        if (!entries.empty() && !Value(*entries.front(), 0).empty()) {
            return entries.front();
        }
    }
    return nullptr;
}

void CheckCatalog(const PacketGeneration& generation, const PacketInf& inf, Findings& findings) {
    const InfEntry* const entry = CatalogEntry(inf.Text);
    if (entry == nullptr) {
        if (generation.For.Name != L"WINXP") {
            findings.push_back({RuleId::CatalogNotNamed,
                                {inf.Shown, VersionLine(inf, L"CatalogFile")},
                                L"no catalog is named"});
        }
    } else if (!HasFile(generation.Files, Value(*entry, 0))) {
        findings.push_back({RuleId::CatalogMissing,
                            {inf.Shown, entry->Line},
                            Value(*entry, 0) + L" is not in " + generation.For.Folder()});
    }
}

// --- files ---

struct Source {
    std::wstring Name;
    std::size_t Line = 0;
};

// The files that install sections for this machine copy, each once.
std::vector<Source> CopiedSources(const InfText& inf) {
    std::vector<Source> sources;
    const auto add = [&sources](const std::wstring& name, std::size_t line) {
        const bool known = std::any_of(sources.begin(), sources.end(), [&name](const auto& entry) {
            return EqualIgnoringCase(entry.Name, name);
        });
        if (!name.empty() && !known) {
            sources.push_back({name, line});
        }
    };
    for (const std::wstring& install : InstallSectionsOf(ModelsOf(inf))) {
        for (const std::wstring_view decoration : {L"NTamd64", L"NT", L""}) {
            for (const InfEntry* entry :
                 inf.Entries(Decorated(install, decoration), L"CopyFiles")) {
                for (const std::wstring& value : entry->Values) {
                    if (value.starts_with(L"@")) {
                        add(value.substr(1), entry->Line);
                    } else if (const reading::InfSection* section = inf.Find(value)) {
                        for (const InfEntry& line : section->Entries) {
                            // The second field names the file on the medium, when it differs.
                            add(Value(line, 1).empty() ? Value(line, 0) : Value(line, 1),
                                line.Line);
                        }
                    }
                }
            }
        }
    }
    return sources;
}

const InfEntry* FirstEntry(const InfText& inf, std::initializer_list<const wchar_t*> sections,
                           std::wstring_view key) {
    for (const wchar_t* section : sections) {
        const auto entries = inf.Entries(section, key);
        if (!entries.empty()) {
            return entries.front();
        }
    }
    return nullptr;
}

std::wstring WithBackslash(const std::wstring& folder) {
    std::wstring path = folder.starts_with(L"\\") || folder.starts_with(L".\\")
                            ? folder.substr(folder.find(L'\\') + 1)
                            : folder;
    return path.empty() || path.ends_with(L"\\") ? path : path + L"\\";
}

// Where in the packet's folder the INF expects a file.
std::wstring FolderOfSource(const InfText& inf, const std::wstring& name) {
    const InfEntry* const file =
        FirstEntry(inf, {L"SourceDisksFiles.amd64", L"SourceDisksFiles"}, name);
    if (file == nullptr) {
        return {};
    }
    const InfEntry* const disk =
        FirstEntry(inf, {L"SourceDisksNames.amd64", L"SourceDisksNames"}, Value(*file, 0));
    const std::wstring diskFolder = disk == nullptr ? std::wstring() : Value(*disk, 3);
    return WithBackslash(diskFolder) + WithBackslash(Value(*file, 1));
}

// A file that the packet neither brings nor claims to bring: Windows takes its own.
bool IsTakenFromWindows(const PacketGeneration& generation, const PacketInf& inf,
                        const std::wstring& name) {
    const bool isListed =
        FirstEntry(inf.Text, {L"SourceDisksFiles.amd64", L"SourceDisksFiles"}, name) != nullptr;
    return ComesWithWindows(name) && !isListed && !HasFile(generation.Files, name);
}

void CheckSource(const PacketGeneration& generation, const PacketInf& inf, const Source& source,
                 Findings& findings) {
    const std::wstring folder = FolderOfSource(inf.Text, source.Name);
    if (IsTakenFromWindows(generation, inf, source.Name)) {
        return;
    }
    if (!HasFile(generation.Files, folder + source.Name)) {
        findings.push_back({RuleId::FileNotDelivered,
                            {inf.Shown, source.Line},
                            folder + source.Name + L" is not in " + generation.For.Folder()});
    } else if (!folder.empty() && UpperCase(source.Name).ends_with(L".SYS")) {
        findings.push_back({RuleId::DriverInSubfolder,
                            {inf.Shown, source.Line},
                            source.Name + L" lies in " + folder});
    }
}

// --- what an uninstall removes ---

bool IsDeletedByScript(const std::vector<plan::Operation>& operations, const std::wstring& path) {
    for (const plan::Operation& operation : operations) {
        for (const rehearsal::Event& effect : operation.Effects) {
            if (effect.What == rehearsal::Deed::FileDeleted &&
                EqualIgnoringCase(effect.Subject, path)) {
                return true;
            }
        }
    }
    return false;
}

void CheckLeftBehind(const PacketGeneration& generation, const PacketInf& inf, Findings& findings) {
    const std::optional<plan::Run>& uninstall = generation.Install.Uninstall;
    if (!uninstall || uninstall->End != plan::Outcome::Success) {
        return;
    }
    for (const CopiedFile& file : inf.Files) {
        const std::wstring path = file.OwnFolder + file.Name;
        // A folder that the cleanup does not know is told of by itself.
        if (ComesWithWindows(file.Name) || !Contains(file.OwnFolder, L"\\") ||
            ListHolds(uninstall->Gone.Files, path) ||
            IsDeletedByScript(uninstall->Operations, path)) {
            continue;
        }
        findings.push_back({RuleId::LeftBehindByUninstall,
                            {inf.Shown, file.Line},
                            path + L" stays after an uninstall"});
    }
}

// The cleanup deletes what the copy lists name, whoever brought it.
void CheckWindowsFiles(const PacketGeneration& generation, const PacketInf& inf,
                       Findings& findings) {
    for (const CopiedFile& file : inf.Files) {
        // A driver that the packet brings under such a name is told of by itself.
        const bool isDriver = UpperCase(file.Name).ends_with(L".SYS");
        if (ComesWithWindows(file.Name) && Contains(file.CleanupFolder, L"\\") &&
            !(isDriver && HasFile(generation.Files, file.Name))) {
            findings.push_back({RuleId::CopyLineNamesWindowsFile,
                                {inf.Shown, file.Line},
                                file.CleanupFolder + file.Name + L" is a file of Windows"});
        }
    }
}

} // namespace

void CheckVersion(const PacketGeneration& generation, const PacketInf& inf, Findings& findings) {
    const auto entries = inf.Text.Entries(L"Version", L"Class");
    const bool isEmpty = !entries.empty() && Value(*entries.front(), 0).empty();
    if (inf.ClassEndsProcess || isEmpty) {
        findings.push_back(
            {RuleId::ClassEmpty, {inf.Shown, VersionLine(inf, L"Class")}, L"Class has no value"});
    } else if (inf.ClassName.empty()) {
        findings.push_back(
            {RuleId::ClassMissing, {inf.Shown, VersionLine(inf, L"Class")}, L"no class is named"});
    }
    CheckCatalog(generation, inf, findings);
}

void CheckDelivery(const PacketGeneration& generation, const PacketInf& inf, Findings& findings) {
    for (const Source& source : CopiedSources(inf.Text)) {
        CheckSource(generation, inf, source, findings);
    }
    CheckLeftBehind(generation, inf, findings);
    CheckWindowsFiles(generation, inf, findings);
}

} // namespace rules
