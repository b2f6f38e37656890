#include "config/config_reader.h"

#include "common/paths.h"
#include "common/run_state.h"
#include "config/section_candidates.h"
#include "config/windows_generation.h"
#include "platform/platform.h"

namespace {

TextList CandidatesNow(const std::wstring& section) {
    return SectionCandidates(section, SetupMode == InstallRun ? L"INSTALL" : L"UNINSTALL",
                             GetOsName(), L"NTx64");
}

} // namespace

std::wstring ReadConfigString(const std::wstring& section, const std::wstring& key,
                              std::size_t capacity) {
    const std::wstring path = PathBesideExecutable(L"Setup.ini");
    std::wstring buffer(capacity, L'\0');
    for (const std::wstring& candidate : CandidatesNow(section)) {
        GetPrivateProfileStringW(candidate.c_str(), key.c_str(), L"", buffer.data(),
                                 static_cast<DWORD>(capacity), path.c_str());
        // An empty value counts as not set and leaves the word to a less specific section.
        if (buffer.front() != L'\0') {
            return buffer.c_str();
        }
    }
    return {};
}

std::int32_t ReadConfigInt(const std::wstring& section, const std::wstring& key) {
    constexpr UINT NotSet = 0xFFFFFFFF;
    const std::wstring path = PathBesideExecutable(L"Setup.ini");
    for (const std::wstring& candidate : CandidatesNow(section)) {
        const UINT value = GetPrivateProfileIntW(candidate.c_str(), key.c_str(), -1, path.c_str());
        // A value of -1 counts as not set and lets a less specific section decide.
        if (value != NotSet) {
            return static_cast<std::int32_t>(value);
        }
    }
    return 0;
}

bool ReadConfigSwitch(const std::wstring& section, const std::wstring& key) {
    return (static_cast<std::uint32_t>(ReadConfigInt(section, key)) & 0xFFU) != 0;
}

std::uint32_t Milliseconds(std::int32_t seconds) {
    return static_cast<std::uint32_t>(seconds) * 1000U;
}
