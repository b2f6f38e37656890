#include "machine/inf_files.h"

#include "machine/text.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <vector>

namespace machine {

namespace {

struct ParsedInf {
    bool Asked = false; // for its information
    std::vector<std::byte> Information{};
    DWORD InformationError = 0;
    HINF Handle = INVALID_HANDLE_VALUE;
    DWORD Style = 0;
};

std::map<std::wstring, ParsedInf>& Parsed() {
    static std::map<std::wstring, ParsedInf> parsed;
    return parsed;
}

void Close(const ParsedInf& inf) {
    if (inf.Handle != INVALID_HANDLE_VALUE) {
        SetupCloseInfFile(inf.Handle);
    }
}

void AskForInformation(const std::wstring& path, ParsedInf& inf) {
    inf.Asked = true;
    DWORD size = 0;
    if (SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0, &size) !=
        FALSE) {
        inf.Information.resize(size);
        auto* const block =
            static_cast<PSP_INF_INFORMATION>(static_cast<void*>(inf.Information.data()));
        if (SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, block, size,
                                    nullptr) != FALSE) {
            return;
        }
        inf.Information.clear();
    }
    inf.InformationError = GetLastError();
}

} // namespace

BOOL InfInformation(const std::wstring& realPath, PSP_INF_INFORMATION result, DWORD size,
                    PDWORD needed) {
    ParsedInf& inf = Parsed()[Lower(realPath)];
    if (!inf.Asked) {
        AskForInformation(realPath, inf);
    }
    const std::vector<std::byte>& block = inf.Information;
    if (block.empty()) {
        SetLastError(inf.InformationError);
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

HINF OpenInf(const std::wstring& realPath, PCWSTR infClass, DWORD style, PUINT errorLine) {
    ParsedInf& inf = Parsed()[Lower(realPath)];
    if (inf.Handle == INVALID_HANDLE_VALUE || infClass != nullptr || inf.Style != style) {
        Close(inf);
        inf.Handle = SetupOpenInfFileW(realPath.c_str(), infClass, style, errorLine);
        inf.Style = style;
    }
    return inf.Handle;
}

void ForgetInf(const std::wstring& realPath) {
    const auto known = Parsed().find(Lower(realPath));
    if (known != Parsed().end()) {
        Close(known->second);
        Parsed().erase(known);
    }
}

void ForgetAllInfs() {
    for (const auto& entry : Parsed()) {
        Close(entry.second);
    }
    Parsed().clear();
}

} // namespace machine
