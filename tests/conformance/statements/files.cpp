// Files, folders and listings.
#include "conformance/statement.h"

#include <array>

using namespace conformance;

namespace {

std::wstring Made(World& world, const wchar_t* name = L"a.txt") {
    const std::wstring path = world.Folder() + name;
    world.WriteBytes(path, "content");
    return path;
}

std::wstring MadeWith(World& world, const wchar_t* name, DWORD attributes) {
    const std::wstring path = Made(world, name);
    SetFileAttributesW(path.c_str(), attributes);
    return path;
}

std::wstring None(World& world) {
    return world.Folder() + L"none.txt";
}

BOOL Copy(const std::wstring& from, const std::wstring& to, BOOL failIfExists = FALSE) {
    Untouch();
    return CopyFileW(from.c_str(), to.c_str(), failIfExists);
}

// A listing's first name and what the search goes on with.
struct Search {
    explicit Search(const std::wstring& pattern) {
        Untouch();
        Handle = FindFirstFileW(pattern.c_str(), &Data);
        Error = GetLastError();
    }
    ~Search() {
        if (Handle != INVALID_HANDLE_VALUE) {
            FindClose(Handle);
        }
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    [[nodiscard]] Finding Fails(DWORD error) const {
        return Is(Handle == INVALID_HANDLE_VALUE && Error == error, "0x" + Hex(Error));
    }

    WIN32_FIND_DATAW Data{};
    HANDLE Handle = INVALID_HANDLE_VALUE;
    DWORD Error = 0;
};

} // namespace

STATEMENT(P01, "DeleteFileW", Tested, "RemoveFile", "Deleting a read-only file: 5") {
    const std::wstring path = MadeWith(world, L"a.txt", FILE_ATTRIBUTE_READONLY);
    return Refused(DeleteFileW(path.c_str()), ERROR_ACCESS_DENIED);
}

STATEMENT(P02, "DeleteFileW", Tested, "RemoveFile", "Deleting a file that does not exist: 2") {
    return Refused(DeleteFileW(None(world).c_str()), ERROR_FILE_NOT_FOUND);
}

STATEMENT(P03, "DeleteFileW", Tested, "-", "Deleting in a folder that does not exist: 3") {
    return Refused(DeleteFileW((world.Folder() + L"none\\a.txt").c_str()), ERROR_PATH_NOT_FOUND);
}

STATEMENT(P04, "CopyFileW", Tested, "ExecutSingleFileOper",
          "Copying a file that does not exist: 2") {
    return Refused(Copy(None(world), world.Folder() + L"b.txt"), ERROR_FILE_NOT_FOUND);
}

STATEMENT(P05, "CopyFileW", Tested, "-", "Copying onto a file that must not be replaced: 80") {
    const std::wstring from = Made(world);
    return Refused(Copy(from, Made(world, L"b.txt"), TRUE), ERROR_FILE_EXISTS);
}

STATEMENT(P06, "CopyFileW", Documented, "ExecutSingleFileOper",
          "Copying onto a read-only file: 5") {
    const std::wstring from = Made(world);
    return Refused(Copy(from, MadeWith(world, L"b.txt", FILE_ATTRIBUTE_READONLY)),
                   ERROR_ACCESS_DENIED);
}

STATEMENT(P07, "CreateDirectoryW", Tested, "ExecutSingleFileOper",
          "Making a folder that exists: 183") {
    return Refused(CreateDirectoryW(world.Folder().c_str(), nullptr), ERROR_ALREADY_EXISTS);
}

STATEMENT(P08, "CreateDirectoryW", Tested, "ExecutSingleFileOper",
          "Making a folder below one that does not exist: 3") {
    return Refused(CreateDirectoryW((world.Folder() + L"none\\below").c_str(), nullptr),
                   ERROR_PATH_NOT_FOUND);
}

STATEMENT(P09, "GetFileAttributesW", Tested, "RemoveFile",
          "The attributes of a file that does not exist: 2") {
    return Returns(GetFileAttributesW(None(world).c_str()), INVALID_FILE_ATTRIBUTES) &&
           LastErrorIs(ERROR_FILE_NOT_FOUND);
}

STATEMENT(P10, "DeleteFileW", Tested, "RemoveFile", "Deleting a folder as if it were a file: 5") {
    const std::wstring folder = world.Folder() + L"folder";
    CreateDirectoryW(folder.c_str(), nullptr);
    return Refused(DeleteFileW(folder.c_str()), ERROR_ACCESS_DENIED);
}

STATEMENT(P11, "FindFirstFileW", Tested, "FindDriverPacketFiles",
          "A search that finds nothing: 2") {
    Made(world);
    return Search(world.Folder() + L"*.inf").Fails(ERROR_FILE_NOT_FOUND);
}

STATEMENT(P12, "FindFirstFileW", Tested, "FindDriverPacketFiles",
          "A search in a folder that does not exist: 3") {
    return Search(world.Folder() + L"none\\*.inf").Fails(ERROR_PATH_NOT_FOUND);
}

STATEMENT(P13, "FindFirstFileW", Tested, "FindDriverPacketFiles",
          "The letter case of a pattern does not matter; the name comes with its own") {
    Made(world, L"aB.txt");
    return Equal(std::wstring(Search(world.Folder() + L"A*.TXT").Data.cFileName), L"aB.txt");
}

STATEMENT(P14, "FindNextFileW", Tested, "FindDriverPacketFiles", "Behind the last name: 18") {
    Made(world);
    Search search(world.Folder() + L"*.txt");
    return Refused(FindNextFileW(search.Handle, &search.Data), ERROR_NO_MORE_FILES);
}

STATEMENT(P15, "FindFirstFileW", Unjudged, "FindDriverPacketFiles",
          "A pattern for three letters does not find names with four") {
    Made(world, L"a.info");
    return Search(world.Folder() + L"a.inf").Fails(ERROR_FILE_NOT_FOUND);
}

STATEMENT(P21, "CopyFileW GetFileAttributesW", Documented, "ExecutSingleFileOper",
          "A copy of a read-only file is read-only") {
    const std::wstring from = MadeWith(world, L"a.txt", FILE_ATTRIBUTE_READONLY);
    const std::wstring to = world.Folder() + L"b.txt";
    return Done(Copy(from, to)) &&
           Is((GetFileAttributesW(to.c_str()) & FILE_ATTRIBUTE_READONLY) != 0);
}

STATEMENT(P22, "CopyFileW", Documented, "ExecutSingleFileOper",
          "So copying it there a second time fails: 5") {
    const std::wstring from = MadeWith(world, L"a.txt", FILE_ATTRIBUTE_READONLY);
    const std::wstring to = world.Folder() + L"b.txt";
    Copy(from, to);
    return Refused(Copy(from, to), ERROR_ACCESS_DENIED);
}

STATEMENT(P23, "CopyFileW", Documented, "ExecutSingleFileOper", "Copying onto a hidden file: 5") {
    const std::wstring from = Made(world);
    return Refused(Copy(from, MadeWith(world, L"b.txt", FILE_ATTRIBUTE_HIDDEN)),
                   ERROR_ACCESS_DENIED);
}

STATEMENT(P24, "SetFileAttributesW DeleteFileW", Documented, "RemoveFile",
          "A file whose read-only attribute was taken away can be deleted") {
    const std::wstring path = MadeWith(world, L"a.txt", FILE_ATTRIBUTE_READONLY);
    return Done(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL)) &&
           Done(DeleteFileW(path.c_str()));
}

STATEMENT(P25, "SetFileAttributesW", Documented, "RemoveFile",
          "Attributes of a file that does not exist: 2") {
    return Refused(SetFileAttributesW(None(world).c_str(), FILE_ATTRIBUTE_NORMAL),
                   ERROR_FILE_NOT_FOUND);
}

STATEMENT(P26, "FindClose", Documented, "-", "Ending what is no search: 6") {
    return Refused(FindClose(INVALID_HANDLE_VALUE), ERROR_INVALID_HANDLE);
}

STATEMENT(P27, "CreateFileW DeviceIoControl", Documented, "ShiftDevice",
          "A plain file does not understand a device's order: it fails") {
    const std::wstring path = Made(world);
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    DWORD returned = 0;
    const BOOL understood =
        DeviceIoControl(file, 0x00222190, nullptr, 0, nullptr, 0, &returned, nullptr);
    CloseHandle(file);
    return Is(understood == FALSE);
}

STATEMENT(P28, "CreateFileW", Documented, "ExecutSingleFileOper",
          "Opening a file that does not exist: 2") {
    return Refused(CreateFileW(None(world).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                               OPEN_EXISTING, 0, nullptr),
                   ERROR_FILE_NOT_FOUND);
}
