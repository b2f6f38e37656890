#include "rehearsal/cache/inf_cache.h"

namespace rehearsal {

InfCache::~InfCache() {
    for (const auto& entry : opened_) {
        if (entry.second.Handle != INVALID_HANDLE_VALUE) {
            SetupCloseInfFile(entry.second.Handle);
        }
    }
}

const std::vector<std::byte>& InfCache::InformationOf(const std::wstring& path) {
    const auto [entry, isNew] = information_.try_emplace(path);
    Information& known = entry->second;
    if (isNew) {
        DWORD size = 0;
        if (SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0,
                                    &size) != FALSE ||
            GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
            known.Block.resize(size);
            auto* const block =
                static_cast<PSP_INF_INFORMATION>(static_cast<void*>(known.Block.data()));
            if (SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, block, size,
                                        nullptr) == FALSE) {
                known.Block.clear();
            }
        }
        known.Error = known.Block.empty() ? GetLastError() : ERROR_SUCCESS;
    }
    SetLastError(known.Error);
    return known.Block;
}

HINF InfCache::Open(const std::wstring& path, DWORD style) {
    const auto [entry, isNew] = opened_.try_emplace(path);
    Opened& known = entry->second;
    if (isNew) {
        known.Handle = SetupOpenInfFileW(path.c_str(), nullptr, style, nullptr);
        known.Error = known.Handle == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    }
    SetLastError(known.Error);
    return known.Handle;
}

} // namespace rehearsal
