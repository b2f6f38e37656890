#include "inf/section_reader.h"

#include "platform/owners.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>

namespace {

// The style (Windows 9x or NT) that an INF declares, so that it is opened as what it is; nothing
// when the parser refuses the file, which is logged.
std::optional<DWORD> DeclaredStyle(const std::wstring& infPath) {
    DWORD size = 0;
    std::unique_ptr<std::byte[]> block;
    bool known = SetupGetInfInformationW(infPath.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0,
                                         &size) != FALSE ||
                 GetLastError() == ERROR_INSUFFICIENT_BUFFER;
    if (known) {
        size = std::max<DWORD>(size, sizeof(SP_INF_INFORMATION));
        block = std::make_unique<std::byte[]>(size);
        known = SetupGetInfInformationW(infPath.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE,
                                        reinterpret_cast<PSP_INF_INFORMATION>(block.get()), size,
                                        nullptr) != FALSE;
    }
    if (!known) {
        WriteLog(L"GetInfSectionText: Get inf %s information fail,error code 0x%08X",
                 infPath.c_str(), GetLastError());
        return std::nullopt;
    }
    return reinterpret_cast<const SP_INF_INFORMATION*>(block.get())->InfStyle;
}

bool ReadLineText(HINF inf, INFCONTEXT& context, std::wstring& text) {
    DWORD size = 0;
    if (SetupGetLineTextW(&context, inf, nullptr, nullptr, nullptr, 0, &size) == FALSE &&
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return false;
    }
    std::wstring buffer(size + std::size_t{1}, L'\0');
    if (SetupGetLineTextW(&context, inf, nullptr, nullptr, buffer.data(), size, nullptr) == FALSE) {
        return false;
    }
    text = buffer.c_str();
    return true;
}

bool ReadLineFields(INFCONTEXT& context, TextList& fields) {
    const DWORD count = SetupGetFieldCount(&context);
    for (DWORD index = 0; index <= count; ++index) {
        DWORD size = 0;
        // The parser may refuse a field without saying why; an error left over from an earlier call
        // must not be taken for its answer.
        SetLastError(ERROR_SUCCESS);
        if (SetupGetStringFieldW(&context, index, nullptr, 0, &size) == FALSE &&
            GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
            if (index == 0) {
                fields.emplace_back();
            }
            // A refused value leaves no gap, on purpose: the values behind it move down.
            continue;
        }
        std::wstring buffer(size + std::size_t{1}, L'\0');
        if (SetupGetStringFieldW(&context, index, buffer.data(), size, nullptr) == FALSE) {
            return false;
        }
        fields.emplace_back(buffer.c_str());
    }
    return true;
}

} // namespace

bool GetInfSectionText(const std::wstring& infPath, const std::wstring& sectionName,
                       InfLineList& lines) {
    if (infPath.empty()) {
        return false;
    }
    lines.clear();
    const std::optional<DWORD> style = DeclaredStyle(infPath);
    if (!style) {
        return false;
    }
    const InfFileOwner inf(SetupOpenInfFileW(infPath.c_str(), nullptr, *style, nullptr));
    if (!inf) {
        WriteLog(L"GetInfSectionText: Open inf %s fail,error code 0x%08X", infPath.c_str(),
                 GetLastError());
        return false;
    }
    INFCONTEXT context{};
    if (SetupFindFirstLineW(inf.Get(), sectionName.c_str(), nullptr, &context) == FALSE) {
        return true;
    }
    do {
        InfLine line;
        if (!ReadLineText(inf.Get(), context, line.Text) || !ReadLineFields(context, line.Fields)) {
            return false;
        }
        lines.push_back(std::move(line));
    } while (SetupFindNextLine(&context, &context) != FALSE);
    return true;
}

bool GetInfSectionTextByKey(const std::wstring& infPath, const std::wstring& sectionName,
                            const std::wstring& key, InfLineList& lines) {
    if (infPath.empty() || sectionName.empty()) {
        return false;
    }
    InfLineList section;
    if (!GetInfSectionText(infPath, sectionName, section)) {
        return false;
    }
    for (InfLine& line : section) {
        if (key.empty() || EqualIgnoringCase(line.Fields.front(), key)) {
            lines.push_back(std::move(line));
        }
    }
    return true;
}
