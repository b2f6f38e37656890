#include "config/windows_generation.h"

#include "config/version_code.h"
#include "platform/platform.h"

#include <array>
#include <cstddef>
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

// The product version text of the version resource; empty when it has none.
std::wstring_view ProductVersionIn(const VersionBlock& block) {
    void* value = nullptr;
    UINT size = 0;
    if (VerQueryValueW(block.Bytes.data(), L"VarFileInfo\\Translation", &value, &size) == FALSE ||
        size < sizeof(Translation)) {
        return {};
    }
    const auto* translation = static_cast<const Translation*>(value);
    std::array<wchar_t, 64> query{};
    wsprintfW(query.data(), L"\\StringFileInfo\\%04x%04x\\ProductVersion", translation->Language,
              translation->CodePage);
    if (VerQueryValueW(block.Bytes.data(), query.data(), &value, &size) == FALSE) {
        return {};
    }
    const std::wstring_view text(static_cast<const wchar_t*>(value), size);
    return text.substr(0, text.find(L'\0'));
}

} // namespace

std::uint32_t GetOsVersionCode() {
    VersionBlock block;
    if (GetFileVersionInfoW(L"ntoskrnl.exe", 0, VersionBlockSize, block.Bytes.data()) == FALSE) {
        return 0;
    }
    const std::wstring_view version = ProductVersionIn(block);
    return version.data() == nullptr ? 0 : VersionCodeOf(version);
}

std::wstring GetOsName() {
    return std::wstring(NameOfVersionCode(GetOsVersionCode()));
}
