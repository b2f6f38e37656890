// Files and folders. The packet's folder is listed for real; every file that the program asks for
// is there, and nothing is made, copied or deleted.
#include "rehearsal/handles.h"
#include "rehearsal/imports.h"

#include <algorithm>

namespace rehearsal {

namespace {

struct Listing : HandleContent {
    std::vector<WIN32_FIND_DATAW> Entries;
    std::size_t Next = 0;
};

std::vector<WIN32_FIND_DATAW> ListReal(const std::wstring& pattern) {
    std::vector<WIN32_FIND_DATAW> entries;
    WIN32_FIND_DATAW entry{};
    HANDLE const search = FindFirstFileW(pattern.c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return entries;
    }
    do {
        entries.push_back(entry);
    } while (FindNextFileW(search, &entry) != FALSE);
    FindClose(search);
    return entries;
}

std::vector<WIN32_FIND_DATAW> ListStore(const Stage& stage) {
    std::vector<WIN32_FIND_DATAW> entries;
    for (const StoreEntry& stored : stage.Store) {
        WIN32_FIND_DATAW entry{};
        stored.Name.copy(entry.cFileName, MAX_PATH - 1);
        entries.push_back(entry);
    }
    return entries;
}

bool IsInStore(std::wstring_view path) {
    const std::wstring folder = StoreFolder;
    return EqualIgnoringCase(path.substr(0, folder.size()), folder);
}

HANDLE WINAPI FindFirst(LPCWSTR pattern, LPWIN32_FIND_DATAW data) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FailWith(INVALID_HANDLE_VALUE, ERROR_PATH_NOT_FOUND);
    }
    auto listing = std::make_unique<Listing>();
    if (IsInStore(pattern)) {
        stage->Write({.What = Deed::StoreSearched, .Subject = AfterLast(pattern, L'\\')});
        listing->Entries = ListStore(*stage);
    } else {
        const std::wstring real = stage->RealPath(pattern);
        listing->Entries = real.empty() ? std::vector<WIN32_FIND_DATAW>{} : ListReal(real);
        const DWORD attributes = GetFileAttributesW(BeforeLast(real, L'\\').c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) {
            return FailWith(INVALID_HANDLE_VALUE, ERROR_PATH_NOT_FOUND);
        }
    }
    if (listing->Entries.empty()) {
        return FailWith(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
    }
    *data = listing->Entries[listing->Next++];
    return OpenHandle(std::move(listing));
}

BOOL WINAPI FindNext(HANDLE search, LPWIN32_FIND_DATAW data) {
    auto& listing = ContentOf<Listing>(search);
    if (listing.Next == listing.Entries.size()) {
        return FailWith(FALSE, ERROR_NO_MORE_FILES);
    }
    *data = listing.Entries[listing.Next++];
    return TRUE;
}

BOOL WINAPI EndSearch(HANDLE search) {
    CloseStageHandle(search);
    return TRUE;
}

DWORD WINAPI FileAttributes(LPCWSTR path) {
    Stage* const stage = Stage::Current();
    // An OEM INF is gone once it has been taken out of the store; all other files are there.
    if (stage == nullptr || (IsInStore(path) && stage->RealPath(path).empty() &&
                             UpperCase(AfterLast(path, L'\\')).starts_with(L"OEM"))) {
        return FailWith(INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND);
    }
    return FILE_ATTRIBUTE_NORMAL;
}

BOOL WINAPI ChangeAttributes(LPCWSTR /*path*/, DWORD /*attributes*/) {
    return TRUE;
}

// Writes the deed down; false without a stage.
BOOL Done(Event event) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FailWith(FALSE, ERROR_ACCESS_DENIED);
    }
    stage->Write(std::move(event));
    return TRUE;
}

BOOL WINAPI Delete(LPCWSTR path) {
    return Done({.What = Deed::FileDeleted, .Subject = path});
}

BOOL WINAPI MakeFolder(LPCWSTR path, LPSECURITY_ATTRIBUTES /*security*/) {
    return Done({.What = Deed::FolderMade, .Subject = path});
}

BOOL WINAPI Copy(LPCWSTR source, LPCWSTR target, BOOL /*failIfExists*/) {
    return Done({.What = Deed::FileCopied, .Subject = source, .Object = target});
}

struct OpenPath : HandleContent {
    std::wstring Path;
};

// A device interface of the stage, or an empty file that is made.
HANDLE WINAPI OpenPathOf(LPCWSTR path, DWORD /*access*/, DWORD /*share*/,
                         LPSECURITY_ATTRIBUTES /*security*/, DWORD disposition, DWORD /*flags*/,
                         HANDLE /*pattern*/) {
    if (disposition == CREATE_ALWAYS && Done({.What = Deed::FileMade, .Subject = path}) == FALSE) {
        return INVALID_HANDLE_VALUE;
    }
    auto content = std::make_unique<OpenPath>();
    content->Path = path;
    return OpenHandle(std::move(content));
}

std::wstring HexBytes(const unsigned char* bytes, std::size_t count) {
    constexpr std::wstring_view Digits = L"0123456789ABCDEF";
    std::wstring text;
    for (std::size_t index = 0; index < count; ++index) {
        text += index == 0 ? L"" : L" ";
        text += {Digits[bytes[index] >> 4U], Digits[bytes[index] & 15U]};
    }
    return text;
}

BOOL WINAPI SendOrder(HANDLE device, DWORD code, LPVOID input, DWORD inputSize, LPVOID /*output*/,
                      DWORD /*outputSize*/, LPDWORD /*returned*/, LPOVERLAPPED /*overlapped*/) {
    std::wstring command;
    if (input != nullptr && inputSize >= sizeof(SCSI_PASS_THROUGH_DIRECT)) {
        const auto* const request = static_cast<const SCSI_PASS_THROUGH_DIRECT*>(input);
        command = HexBytes(request->Cdb, request->CdbLength);
    }
    return Done({.What = Deed::OrderSent,
                 .Subject = AfterLast(ContentOf<OpenPath>(device).Path, L'?').substr(1),
                 .Text = std::move(command),
                 .Number = code});
}

} // namespace

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(FindFirstFileW, FindFirst);
REHEARSED(FindNextFileW, FindNext);
REHEARSED(FindClose, EndSearch);
REHEARSED(GetFileAttributesW, FileAttributes);
REHEARSED(SetFileAttributesW, ChangeAttributes);
REHEARSED(DeleteFileW, Delete);
REHEARSED(CreateDirectoryW, MakeFolder);
REHEARSED(CopyFileW, Copy);
REHEARSED(CreateFileW, OpenPathOf);
REHEARSED(DeviceIoControl, SendOrder);
