#include "machine/files/real_copies.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <vector>

namespace machine {

namespace {

// The parser answers by content alone, so its answers are kept with it.
struct InfAnswer {
    std::vector<std::byte> Information{};
    DWORD Error = 0;
};

struct Copy {
    std::wstring Path;
    std::optional<InfAnswer> Inf{};
    std::map<DWORD, HINF> Handles{}; // by the style that they were opened in
    // By section, key, default and the size of the caller's buffer.
    std::map<std::tuple<std::wstring, std::wstring, std::wstring, DWORD>, std::wstring> Texts{};
    std::map<std::tuple<std::wstring, std::wstring, INT>, UINT> Numbers{};
};

// All copies, in a folder of this process below the temporary one.
class Copies {
public:
    Copies() {
        std::array<wchar_t, MAX_PATH> temporary{};
        GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
        folder_ = temporary.data() + (L"st" + std::to_wstring(GetCurrentProcessId()));
        CreateDirectoryW(folder_.c_str(), nullptr);
    }
    ~Copies() {
        Clear();
        RemoveDirectoryW(folder_.c_str());
    }
    Copies(const Copies&) = delete;
    Copies& operator=(const Copies&) = delete;

    Copy& Of(const std::string& bytes) {
        const auto known = copies_.find(bytes);
        if (known != copies_.end()) {
            return known->second;
        }
        const Copy copy{.Path = folder_ + L"\\" + std::to_wstring(++serial_)};
        Write(copy.Path, bytes);
        return copies_.emplace(bytes, copy).first->second;
    }
    void Clear() {
        for (const auto& [bytes, copy] : copies_) {
            for (const auto& [style, inf] : copy.Handles) {
                SetupCloseInfFile(inf);
            }
            DeleteFileW(copy.Path.c_str());
        }
        copies_.clear();
    }
    [[nodiscard]] std::size_t Count() const { return copies_.size(); }

private:
    static void Write(const std::wstring& path, const std::string& bytes) {
        HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            throw std::runtime_error("the machine cannot write a file below the temporary folder");
        }
        DWORD written = 0;
        WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
        CloseHandle(file);
    }

    std::wstring folder_;
    int serial_ = 0;
    std::map<std::string, Copy> copies_;
};

Copies& AllCopies() {
    static Copies copies;
    return copies;
}

InfAnswer AskForInformation(const std::wstring& path) {
    InfAnswer answer;
    DWORD size = 0;
    if (SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0, &size) !=
        FALSE) {
        answer.Information.resize(size);
        auto* const block =
            static_cast<PSP_INF_INFORMATION>(static_cast<void*>(answer.Information.data()));
        if (SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, block, size,
                                    nullptr) != FALSE) {
            return answer;
        }
        answer.Information.clear();
    }
    answer.Error = GetLastError();
    return answer;
}

DWORD PutText(const std::wstring& text, LPWSTR buffer) {
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return static_cast<DWORD>(text.size());
}

} // namespace

std::wstring RealCopyOf(const std::string& bytes) {
    return AllCopies().Of(bytes).Path;
}

BOOL InfInformation(const std::string& bytes, PSP_INF_INFORMATION result, DWORD size,
                    PDWORD needed) {
    Copy& copy = AllCopies().Of(bytes);
    if (!copy.Inf) {
        copy.Inf = AskForInformation(copy.Path);
    }
    const std::vector<std::byte>& block = copy.Inf->Information;
    if (block.empty()) {
        SetLastError(copy.Inf->Error);
        return FALSE;
    }
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(block.size());
    }
    if (result == nullptr && size >= block.size()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (result != nullptr && size < block.size()) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    if (result != nullptr) {
        std::copy(block.begin(), block.end(), static_cast<std::byte*>(static_cast<void*>(result)));
    }
    return TRUE;
}

HINF OpenInf(const std::string& bytes, PCWSTR infClass, DWORD style, PUINT errorLine) {
    Copy& copy = AllCopies().Of(bytes);
    const auto known = copy.Handles.find(style);
    if (infClass == nullptr && known != copy.Handles.end()) {
        return known->second;
    }
    HINF inf = SetupOpenInfFileW(copy.Path.c_str(), infClass, style, errorLine);
    if (inf != INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        copy.Handles.emplace(style, inf);
        SetLastError(error);
    }
    return inf;
}

DWORD ProfileText(const std::string& bytes, LPCWSTR section, LPCWSTR key, LPCWSTR otherwise,
                  LPWSTR buffer, DWORD size) {
    Copy& copy = AllCopies().Of(bytes);
    if (section == nullptr || key == nullptr || otherwise == nullptr || size == 0) {
        return GetPrivateProfileStringW(section, key, otherwise, buffer, size, copy.Path.c_str());
    }
    const std::tuple question{std::wstring(section), std::wstring(key), std::wstring(otherwise),
                              size};
    const auto known = copy.Texts.find(question);
    if (known != copy.Texts.end()) {
        return PutText(known->second, buffer);
    }
    const DWORD length =
        GetPrivateProfileStringW(section, key, otherwise, buffer, size, copy.Path.c_str());
    copy.Texts[question] = std::wstring(buffer, length);
    return length;
}

UINT ProfileNumber(const std::string& bytes, LPCWSTR section, LPCWSTR key, INT otherwise) {
    Copy& copy = AllCopies().Of(bytes);
    if (section == nullptr || key == nullptr) {
        return GetPrivateProfileIntW(section, key, otherwise, copy.Path.c_str());
    }
    const std::tuple question{std::wstring(section), std::wstring(key), otherwise};
    const auto known = copy.Numbers.find(question);
    if (known != copy.Numbers.end()) {
        return known->second;
    }
    const UINT number = GetPrivateProfileIntW(section, key, otherwise, copy.Path.c_str());
    copy.Numbers[question] = number;
    return number;
}

void LimitRealCopies() {
    constexpr std::size_t Many = 500;
    if (AllCopies().Count() > Many) {
        AllCopies().Clear();
    }
}

} // namespace machine
