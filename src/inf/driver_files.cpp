#include "inf/driver_files.h"

#include "common/checked.h"
#include "common/limits.h"
#include "common/paths.h"
#include "inf/decorations.h"
#include "inf/models.h"

#include <algorithm>

namespace {

// Appends the distinct copy-section names that one install section's "CopyFiles" entries name.
bool CollectCopySections(const std::wstring& infPath, const std::wstring& installSection,
                         TextList& copySections) {
    InfLineList lines;
    for (const std::wstring_view decoration : KnownDecorations) {
        if (!MatchPlatformDecoration(decoration)) {
            continue;
        }
        // The empty decoration gives the name with a final dot. The bare install section is not
        // read: its files would be deleted by the cleanup, which packets do not count with.
        const std::wstring name =
            Cut(std::wstring(installSection).append(L".").append(decoration), PathCapacity);
        if (!GetInfSectionTextByKey(infPath, name, L"CopyFiles", lines)) {
            return false;
        }
    }
    for (const InfLine& line : lines) {
        for (std::size_t index = 1; index < line.Fields.size(); ++index) {
            AppendDistinct(copySections, line.Fields[index]);
        }
    }
    return true;
}

bool FolderIsListed(const DriverFileList& entries, const std::wstring& folder) {
    return std::ranges::any_of(entries, [&folder](const DriverFileEntry& entry) {
        return EqualIgnoringCase(entry.front(), folder);
    });
}

void AppendFiles(const std::wstring& infPath, const InfLineList& lines,
                 const TextList& copySections, DriverFileList& entries) {
    for (std::size_t position = 0; position < lines.size(); ++position) {
        const std::wstring& fileName = CheckedAt(lines[position].Fields, 1);
        // Compares a file name with folders, which never are one: a file that is listed twice is
        // there twice, and the log tells so.
        if (FolderIsListed(entries, fileName)) {
            continue;
        }
        // The line's position picks the section whose folder counts, not the section that the line
        // stands in. Where there is no such section the process ends: better no cleanup than a file
        // deleted from a wrong folder.
        // Without a folder, or with one that cannot be read, the file counts as not existing.
        std::wstring folder;
        GetDestinationDir(infPath, CheckedAt(copySections, position), folder);
        entries.push_back({folder, fileName});
    }
}

} // namespace

bool GetInfClassName(const std::wstring& infPath, std::wstring& className) {
    className.clear();
    InfLineList lines;
    if (!GetInfSectionTextByKey(infPath, L"Version", L"Class", lines)) {
        return false;
    }
    if (!lines.empty()) {
        className = UpperCase(Cut(CheckedAt(lines.front().Fields, 1), ClassNameCapacity));
    }
    return true;
}

bool GetDestinationDir(const std::wstring& infPath, const std::wstring& copySection,
                       std::wstring& folder) {
    InfLineList lines;
    if (!GetInfSectionTextByKey(infPath, L"DestinationDirs", copySection, lines)) {
        return false;
    }
    if (lines.empty() &&
        !GetInfSectionTextByKey(infPath, L"DestinationDirs", L"DefaultDestDir", lines)) {
        return false;
    }
    if (lines.empty()) {
        return true;
    }
    const TextList& fields = lines.front().Fields;
    const std::wstring& number = CheckedAt(fields, 1);
    if (EqualIgnoringCase(number, L"12")) {
        folder = WindowsFolder(PathCapacity) + L"\\SYSTEM32\\DRIVERS\\";
    } else if (EqualIgnoringCase(number, L"11")) {
        folder = WindowsFolder(PathCapacity) + L"\\SYSTEM32\\";
    } else if (EqualIgnoringCase(number, L"10")) {
        folder = WindowsFolder(PathCapacity) + L"\\" + CheckedAt(fields, 2) + L"\\";
    } else {
        folder += number;
    }
    folder = Cut(folder, PathCapacity);
    return true;
}

bool GetDriverFileList(const std::wstring& infPath, DriverFileList& entries) {
    if (infPath.empty()) {
        return false;
    }
    entries.clear();
    TextList installSections;
    if (!GetInstallSectionsFromInf(infPath, installSections)) {
        return false;
    }
    TextList copySections;
    for (const std::wstring& section : installSections) {
        if (!CollectCopySections(infPath, section, copySections)) {
            return false;
        }
    }
    for (const std::wstring& section : copySections) {
        InfLineList lines;
        if (!GetInfSectionText(infPath, section, lines)) {
            return false;
        }
        AppendFiles(infPath, lines, copySections, entries);
    }
    return true;
}
