#include "drivers/driver_store.h"

#include "drivers/inf_file.h"
#include "drivers/infs_in_use.h"
#include "journal.h"
#include "replacements.h"
#include "test_aids.h"

#include <algorithm>
#include <cwchar>
#include <filesystem>

namespace {

constexpr int NumbersTried = 1000;

std::wstring StoreFolder() {
    wchar_t folder[MAX_PATH] = {};
    GetWindowsDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\inf\\";
}

bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L'\\') + 1);
}

std::wstring WithExtension(const std::wstring& path, const wchar_t* extension) {
    return path.substr(0, path.find_last_of(L'.')) + extension;
}

std::vector<char> ReadAll(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::vector<char> bytes(GetFileSize(file, nullptr));
    DWORD read = 0;
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    CloseHandle(file);
    bytes.resize(read);
    return bytes;
}

std::wstring StoredName(int number) {
    return StoreFolder() + L"oem" + std::to_wstring(number) + L".inf";
}

// The name of an INF that is in the store already; empty when it is not.
std::wstring FindStored(const std::wstring& source) {
    const std::vector<char> bytes = ReadAll(source);
    for (int number = 0; number < NumbersTried; ++number) {
        std::wstring name = StoredName(number);
        if (Exists(name) && ReadAll(name) == bytes) {
            return name;
        }
    }
    return {};
}

std::wstring FirstFreeName() {
    int number = 0;
    while (number < NumbersTried && Exists(StoredName(number))) {
        ++number;
    }
    return StoredName(number);
}

// Windows: an INF that is in the store already keeps its name; a new one gets the first free
// number.
std::wstring NameFor(const std::wstring& source) {
    const std::wstring stored = FindStored(source);
    return stored.empty() ? FirstFreeName() : stored;
}

bool FilesAreThere(const std::vector<std::wstring>& files, const std::wstring& folder) {
    const auto missing = std::ranges::find_if(
        files, [&](const std::wstring& file) { return !Exists(folder + file); });
    if (missing != files.end()) {
        Note(L"missing: " + folder + *missing);
    }
    return missing == files.end();
}

// Windows keeps a driver's files in its driver store. Wine looks for them beside the stored INF.
void StoreFiles(const std::vector<std::wstring>& files, const std::wstring& folder) {
    for (const std::wstring& file : files) {
        CopyFileW((folder + file).c_str(), (StoreFolder() + file).c_str(), FALSE);
    }
}

// Windows makes a precompiled twin of each INF that it uses. Nothing reads this one.
void MakePnf(const std::wstring& inf) {
    const HANDLE file = CreateFileW(WithExtension(inf, L".pnf").c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
    }
}

bool Names(const std::vector<std::wstring>& files, const std::wstring& file) {
    return std::ranges::any_of(
        files, [&](const std::wstring& name) { return _wcsicmp(name.c_str(), file.c_str()) == 0; });
}

// True when an INF of the store other than `inf` has the file.
bool IsUsedByOthers(const std::wstring& inf, const std::wstring& file) {
    for (int number = 0; number < NumbersTried; ++number) {
        const std::wstring other = StoredName(number);
        if (!Exists(other) || _wcsicmp(other.c_str(), inf.c_str()) == 0) {
            continue;
        }
        const InfFile open(other);
        if (open.IsOpen() && Names(SourceFilesOf(open), file)) {
            return true;
        }
    }
    return false;
}

void ForgetFiles(const std::wstring& inf) {
    const InfFile open(inf);
    if (!open.IsOpen()) {
        return;
    }
    for (const std::wstring& file : SourceFilesOf(open)) {
        if (!IsUsedByOthers(inf, file)) {
            DeleteFileW((StoreFolder() + file).c_str());
        }
    }
}

// Since Wine 10, installing a driver on a device puts the INF and its files into folders of Wine's
// own, called <INF>_<something>; an INF that later gets the same name would be taken from there.
void ForgetWinesCopies(const std::wstring& name) {
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    const std::filesystem::path store =
        std::filesystem::path(folder) / L"driverstore" / L"filerepository";
    std::vector<std::filesystem::path> copies;
    std::error_code error;
    for (std::filesystem::directory_iterator at(store, error), end; at != end;
         at.increment(error)) {
        const std::wstring found = at->path().filename().wstring();
        if (_wcsnicmp(found.c_str(), (name + L"_").c_str(), name.size() + 1) == 0) {
            copies.push_back(at->path());
        }
    }
    for (const std::filesystem::path& copy : copies) {
        std::filesystem::remove_all(copy, error);
    }
}

BOOL GiveName(const std::wstring& stored, PWSTR destination, DWORD length, PDWORD needed,
              PWSTR* component) {
    const auto size = static_cast<DWORD>(stored.size() + 1);
    if (needed != nullptr) {
        *needed = size;
    }
    if (destination == nullptr) {
        return Succeed();
    }
    if (length < size) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::wmemcpy(destination, stored.c_str(), size);
    if (component != nullptr) {
        *component = destination + FolderOf(stored).size();
    }
    return Succeed();
}

// Why the style forbids the copy; ERROR_SUCCESS when it does not.
DWORD StyleForbids(const std::wstring& source, DWORD style) {
    if ((style & (SP_COPY_REPLACEONLY | SP_COPY_NOOVERWRITE)) == 0 || !Exists(source)) {
        return ERROR_SUCCESS;
    }
    const bool stored = !FindStored(source).empty();
    if (!stored && (style & SP_COPY_REPLACEONLY) != 0) {
        return ERROR_FILE_NOT_FOUND;
    }
    return stored && (style & SP_COPY_NOOVERWRITE) != 0 ? ERROR_FILE_EXISTS : ERROR_SUCCESS;
}

DWORD UninstallError(const std::wstring& name, DWORD flags) {
    if (name.find(L'\\') != std::wstring::npos) {
        return ERROR_INVALID_PARAMETER;
    }
    if (name.empty() || !Exists(StoreFolder() + name)) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (_wcsnicmp(name.c_str(), L"oem", 3) != 0) {
        return NotAnOemInf;
    }
    const bool forced = (flags & SUOI_FORCEDELETE) != 0;
    return !forced && DevicesUse(name) ? InfInUse : ERROR_SUCCESS;
}

} // namespace

std::wstring StoreInf(const std::wstring& source) {
    if (_wcsicmp(FolderOf(source).c_str(), StoreFolder().c_str()) == 0) {
        return source;
    }
    if (!Exists(source)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return {};
    }
    const InfFile inf(source);
    if (!inf.IsOpen()) {
        return {};
    }
    const std::vector<std::wstring> files = SourceFilesOf(inf);
    if (!FilesAreThere(files, FolderOf(source))) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return {};
    }
    std::wstring stored = NameFor(source);
    if (!Exists(stored) && !CopyFileW(source.c_str(), stored.c_str(), TRUE)) {
        return {};
    }
    SetFileAttributesW(stored.c_str(), FILE_ATTRIBUTE_NORMAL);
    StoreFiles(files, FolderOf(source));
    MakePnf(stored);
    Note(L"stored as " + stored);
    return stored;
}

// Windows: the copy is always called oem<N>.inf; a catalogue that is named and missing only makes
// the package unsigned; a file that the INF copies and that is missing makes the call fail with 2.
// Wine 8: keeps the original name as long as no other file has it; fails with 2 for the catalogue;
// and for a missing file it fails not here but loops for ever when the driver is installed; knows
// no SP_COPY_REPLACEONLY.
BOOL WINAPI FilledCopyOEMInf(PCWSTR source, PCWSTR /*mediaLocation*/, DWORD /*mediaType*/,
                             DWORD style, PWSTR destination, DWORD destinationLength, PDWORD needed,
                             PWSTR* component) {
    Enter("SetupCopyOEMInfW", source == nullptr ? L"" : source);
    if (CopyMustFail()) {
        return FALSE;
    }
    if (source == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (const DWORD error = StyleForbids(source, style)) {
        GiveName(FindStored(source), destination, destinationLength, needed, component);
        return Fail(error);
    }
    const std::wstring stored = StoreInf(source);
    if (stored.empty() || !GiveName(stored, destination, destinationLength, needed, component)) {
        return FALSE;
    }
    if ((style & SP_COPY_DELETESOURCE) != 0) {
        DeleteFileW(source);
    }
    return Succeed();
}

// Windows: removes the INF and its precompiled twin; without SUOI_FORCEDELETE not while a device,
// plugged or not, has a driver from it. Wine 8: without the flag it removes nothing and says TRUE,
// with it the INF alone.
BOOL WINAPI FilledUninstallOEMInf(PCWSTR name, DWORD flags, PVOID /*reserved*/) {
    Enter("SetupUninstallOEMInfW", name == nullptr ? L"" : name);
    if (name == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (const DWORD error = UninstallError(name, flags)) {
        return Fail(error);
    }
    const std::wstring path = StoreFolder() + name;
    ForgetFiles(path);
    ForgetWinesCopies(name);
    DeleteFileW(WithExtension(path, L".pnf").c_str());
    return DeleteFileW(path.c_str()) ? Succeed() : FALSE;
}
