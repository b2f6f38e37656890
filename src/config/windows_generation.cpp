#include "config/windows_generation.h"

#include "config/version_code.h"
#include "platform/system_libraries.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace {

constexpr std::size_t VersionBlockSize = 2600;

// Aligned as the resource inside it expects to be.
struct alignas(std::max_align_t) VersionBlock {
    std::array<std::byte, VersionBlockSize> Bytes{};
};

struct Translation {
    WORD Language;
    WORD CodePage;
};

// The version functions of the system. Looked up at run time: their library is none of those that
// Windows maps for every process from its own folder, and would be taken from beside the program.
struct VersionFunctions {
    GetFileVersionInfoFunction GetInfo;
    VerQueryValueFunction Query;
};

std::optional<VersionFunctions> FindVersionFunctions() {
    const HMODULE library = LoadSystemLibrary(L"VERSION.dll");
    if (library == nullptr) {
        return std::nullopt;
    }
    const VersionFunctions functions{
        GetFunction<GetFileVersionInfoFunction>(library, "GetFileVersionInfoW"),
        GetFunction<VerQueryValueFunction>(library, "VerQueryValueW")};
    if (functions.GetInfo == nullptr || functions.Query == nullptr) {
        return std::nullopt;
    }
    return functions;
}

// The product version text of the version resource; nothing when it has none.
std::optional<std::wstring> ProductVersionIn(const VersionBlock& block,
                                             VerQueryValueFunction query) {
    void* value = nullptr;
    UINT size = 0;
    if (query(block.Bytes.data(), L"VarFileInfo\\Translation", &value, &size) == FALSE ||
        size < sizeof(Translation)) {
        return std::nullopt;
    }
    const auto* translation = static_cast<const Translation*>(value);
    std::array<wchar_t, 64> name{};
    wsprintfW(name.data(), L"\\StringFileInfo\\%04x%04x\\ProductVersion", translation->Language,
              translation->CodePage);
    if (query(block.Bytes.data(), name.data(), &value, &size) == FALSE) {
        return std::nullopt;
    }
    const std::wstring_view text(static_cast<const wchar_t*>(value), size);
    return std::wstring(text.substr(0, text.find(L'\0')));
}

} // namespace

std::uint32_t GetOsVersionCode() {
    const std::optional<VersionFunctions> functions = FindVersionFunctions();
    VersionBlock block;
    if (!functions ||
        functions->GetInfo(L"ntoskrnl.exe", 0, VersionBlockSize, block.Bytes.data()) == FALSE) {
        return 0;
    }
    const std::optional<std::wstring> version = ProductVersionIn(block, functions->Query);
    return version ? VersionCodeOf(*version) : 0;
}

std::wstring GetOsName() {
    return std::wstring(NameOfVersionCode(GetOsVersionCode()));
}
