// The files and folders of the simulated drives. They are kept in memory: a run that is repeated
// thousands of times would spend most of its time on real ones.
#pragma once

#include "platform/platform.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace machine {

struct FileEntry {
    std::wstring Name{}; // in the letter case that it was made with
    DWORD Attributes = FILE_ATTRIBUTE_ARCHIVE;
    std::string Bytes{};
    FILETIME Written{};

    [[nodiscard]] bool IsFolder() const { return (Attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
};

// Paths are those of the program: "D:\\Packet\\a.txt", case ignored. Those without a drive lie
// below a folder that is not there until something is put into it.
class FileTree {
public:
    // Null when there is none.
    [[nodiscard]] FileEntry* Find(std::wstring_view path);
    [[nodiscard]] const FileEntry* Find(std::wstring_view path) const;
    // Why there is none: ERROR_FILE_NOT_FOUND in a folder that exists, ERROR_PATH_NOT_FOUND, or
    // ERROR_INVALID_NAME for what cannot be a path.
    [[nodiscard]] DWORD ErrorOfMissing(std::wstring_view path) const;

    // The file, new or as it is; its folder must be there.
    FileEntry& Put(std::wstring_view path);
    // The folder and those above it.
    void MakeFolders(std::wstring_view path);
    void Erase(std::wstring_view path);

    // What the folder of the pattern holds and the pattern's last part finds, as Windows lists it.
    // Empty with the error of a search.
    [[nodiscard]] std::vector<WIN32_FIND_DATAW> List(std::wstring_view pattern, DWORD& error) const;
    // Full paths of all files below the folder, as `folder` spells their beginning.
    [[nodiscard]] std::vector<std::wstring> FilesBelow(std::wstring_view folder) const;

private:
    std::map<std::wstring, FileEntry> entries_; // by folded path
};

// A path as the key of what it names: two spellings of one path give the same.
std::wstring FoldedPath(std::wstring_view path);

} // namespace machine
