#include "machine/files/file_tree.h"

#include "machine/guarded_memory.h"
#include "machine/text.h"

#include <algorithm>

namespace machine {

namespace {

constexpr std::wstring_view NoDrive = L"none";
constexpr std::size_t LongestPart = 255;

bool HasDrive(std::wstring_view path) {
    return path.size() >= 2 && path[1] == L':' && Lower(path.substr(0, 1)) >= L"a" &&
           Lower(path.substr(0, 1)) <= L"z";
}

// The parts of the path between its backslashes, the drive (or what stands for it) first.
std::vector<std::wstring> PartsOf(std::wstring_view path) {
    if (path.starts_with(L"\\\\?\\")) {
        path.remove_prefix(4);
    }
    std::vector<std::wstring> parts{std::wstring(HasDrive(path) ? path.substr(0, 2) : NoDrive)};
    path.remove_prefix(HasDrive(path) ? 2 : 0);
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of(L"\\/"), path.size());
        const std::wstring part(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
        if (part == L".." && parts.size() > 1) {
            parts.pop_back();
        } else if (!part.empty() && part != L"." && part != L"..") {
            parts.push_back(part);
        }
    }
    // Windows drops what ends a name without counting.
    std::wstring& last = parts.back();
    last.erase(last.find_last_not_of(L". ") + 1);
    return parts;
}

std::wstring Joined(const std::vector<std::wstring>& parts) {
    std::wstring path;
    for (const std::wstring& part : parts) {
        path += (path.empty() ? L"" : L"\\") + part;
    }
    return path;
}

bool IsName(std::wstring_view part) {
    return part.size() <= LongestPart && part.find_first_of(L"<>:\"|?*") == std::wstring_view::npos;
}

bool IsPath(const std::vector<std::wstring>& parts) {
    return std::all_of(parts.begin() + 1, parts.end(), IsName);
}

std::wstring_view FolderOf(std::wstring_view key) {
    return key.substr(0, std::min(key.rfind(L'\\'), key.size()));
}

// '*' any characters, '?' any one.
bool Fits(std::wstring_view name, std::wstring_view pattern) {
    if (pattern.empty()) {
        return name.empty();
    }
    if (pattern.front() == L'*') {
        return Fits(name, pattern.substr(1)) || (!name.empty() && Fits(name.substr(1), pattern));
    }
    return !name.empty() && (pattern.front() == L'?' || pattern.front() == name.front()) &&
           Fits(name.substr(1), pattern.substr(1));
}

// What a file system that keeps short names calls a long one: "a.info" is "a~1.inf".
std::wstring ShortName(const std::wstring& name) {
    const std::size_t dot = std::min(name.rfind(L'.'), name.size());
    const std::wstring extension = name.substr(std::min(dot + 1, name.size()));
    if (dot <= 8 && extension.size() <= 3) {
        return name;
    }
    return name.substr(0, std::min<std::size_t>(dot, 6)) + L"~1." + extension.substr(0, 3);
}

bool IsFound(const std::wstring& name, const std::wstring& pattern) {
    const bool anything = pattern == L"*" || pattern == L"*.*";
    const bool wild = pattern.find_first_of(L"*?") != std::wstring::npos;
    return anything || Fits(name, pattern) || (wild && Fits(ShortName(name), pattern));
}

WIN32_FIND_DATAW Listed(const FileEntry& entry, const std::wstring& name) {
    WIN32_FIND_DATAW data{};
    data.dwFileAttributes = entry.Attributes;
    data.ftLastWriteTime = entry.Written;
    data.nFileSizeLow = static_cast<DWORD>(entry.Bytes.size());
    name.copy(data.cFileName, MAX_PATH - 1);
    return data;
}

} // namespace

std::wstring FoldedPath(std::wstring_view path) {
    const UnguardedScope unguarded;
    return Folded(Joined(PartsOf(path)));
}

FileEntry* FileTree::Find(std::wstring_view path) {
    const auto found = entries_.find(FoldedPath(path));
    return path.empty() || found == entries_.end() ? nullptr : &found->second;
}

const FileEntry* FileTree::Find(std::wstring_view path) const {
    const auto found = entries_.find(FoldedPath(path));
    return path.empty() || found == entries_.end() ? nullptr : &found->second;
}

DWORD FileTree::ErrorOfMissing(std::wstring_view path) const {
    const UnguardedScope unguarded;
    const std::vector<std::wstring> parts = PartsOf(path);
    if (!IsPath(parts)) {
        return ERROR_INVALID_NAME;
    }
    const std::wstring key = Folded(Joined(parts));
    const auto folder = entries_.find(std::wstring(FolderOf(key)));
    const bool inFolder =
        !path.empty() && parts.size() > 1 && folder != entries_.end() && folder->second.IsFolder();
    return inFolder ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

FileEntry& FileTree::Put(std::wstring_view path) {
    const UnguardedScope unguarded;
    const std::vector<std::wstring> parts = PartsOf(path);
    FileEntry& entry = entries_[Folded(Joined(parts))];
    if (entry.Name.empty()) {
        entry.Name = parts.back();
    }
    return entry;
}

void FileTree::MakeFolders(std::wstring_view path) {
    const UnguardedScope unguarded;
    std::wstring folder;
    for (const std::wstring& part : PartsOf(path)) {
        folder += (folder.empty() ? L"" : L"\\") + part;
        FileEntry& entry = entries_[Folded(folder)];
        if (entry.Name.empty()) {
            entry = {.Name = part, .Attributes = FILE_ATTRIBUTE_DIRECTORY};
        }
    }
}

void FileTree::Erase(std::wstring_view path) {
    entries_.erase(FoldedPath(path));
}

std::vector<WIN32_FIND_DATAW> FileTree::List(std::wstring_view pattern, DWORD& error) const {
    const UnguardedScope unguarded;
    const std::wstring folder = FoldedPath(Folder(pattern));
    const std::wstring wanted = Folded(FileName(pattern));
    std::vector<WIN32_FIND_DATAW> entries;
    const auto place = entries_.find(folder);
    if (place == entries_.end() || !place->second.IsFolder()) {
        error = ERROR_PATH_NOT_FOUND;
        return entries;
    }
    if (wanted == L"*" || wanted == L"*.*") {
        entries = {Listed(place->second, L"."), Listed(place->second, L"..")};
    }
    const std::wstring beginning = folder + L"\\";
    for (auto entry = entries_.lower_bound(beginning);
         entry != entries_.end() && entry->first.starts_with(beginning); ++entry) {
        const std::wstring name = entry->first.substr(beginning.size());
        if (name.find(L'\\') == std::wstring::npos && IsFound(name, wanted)) {
            entries.push_back(Listed(entry->second, entry->second.Name));
        }
    }
    error = entries.empty() ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
    return entries;
}

std::vector<std::wstring> FileTree::FilesBelow(std::wstring_view folder) const {
    const UnguardedScope unguarded;
    std::vector<std::wstring> files;
    std::map<std::wstring, std::wstring> shown; // folders by their keys
    const std::wstring top = FoldedPath(folder);
    shown[top] = folder.ends_with(L'\\') ? folder.substr(0, folder.size() - 1) : folder;
    const std::wstring beginning = top + L"\\";
    for (auto entry = entries_.lower_bound(beginning);
         entry != entries_.end() && entry->first.starts_with(beginning); ++entry) {
        const std::wstring path =
            shown[std::wstring(FolderOf(entry->first))] + L"\\" + entry->second.Name;
        shown[entry->first] = path;
        if (!entry->second.IsFolder()) {
            files.push_back(path);
        }
    }
    return files;
}

} // namespace machine
