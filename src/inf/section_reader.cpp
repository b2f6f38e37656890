#include "inf/section_reader.h"

#include "platform/owners.h"
#include "platform/sized_read.h"

#include <optional>

namespace {

// The style (Windows 9x or NT) that an INF declares, so that it is opened as what it is; nothing
// when the parser refuses the file, which is logged.
std::optional<DWORD> DeclaredStyle(const std::wstring& infPath) {
    SizedBlock block;
    const auto query = [&infPath](void* information, DWORD size, DWORD* needed) {
        return SetupGetInfInformationW(infPath.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE,
                                       static_cast<PSP_INF_INFORMATION>(information), size, needed);
    };
    if (ReadSized(block, sizeof(SP_INF_INFORMATION), query) != SizedRead::Done) {
        WriteLog(L"GetInfSectionText: Get inf %s information fail,error code 0x%08X",
                 infPath.c_str(), GetLastError());
        return std::nullopt;
    }
    return block.As<SP_INF_INFORMATION>()->InfStyle;
}

bool ReadLineText(HINF inf, INFCONTEXT& context, std::wstring& text) {
    return ReadSizedText(text, [&](wchar_t* buffer, DWORD capacity, DWORD* needed) {
               return SetupGetLineTextW(&context, inf, nullptr, nullptr, buffer, capacity, needed);
           }) == SizedRead::Done;
}

SizedRead ReadField(INFCONTEXT& context, DWORD index, std::wstring& field) {
    return ReadSizedText(field, [&](wchar_t* buffer, DWORD capacity, DWORD* needed) {
        // The parser may refuse a field without saying why; an error left over from an earlier call
        // must not be taken for its answer.
        SetLastError(ERROR_SUCCESS);
        return SetupGetStringFieldW(&context, index, buffer, capacity, needed);
    });
}

bool ReadLineFields(INFCONTEXT& context, TextList& fields) {
    const DWORD count = SetupGetFieldCount(&context);
    for (DWORD index = 0; index <= count; ++index) {
        std::wstring field;
        const SizedRead read = ReadField(context, index, field);
        // A refused value leaves no gap, the values behind it move down: an empty entry in its
        // place would count as an ID. Only the key keeps its place.
        if (read == SizedRead::NoSize && index != 0) {
            continue;
        }
        if (read != SizedRead::Done && read != SizedRead::NoSize) {
            return false;
        }
        fields.push_back(std::move(field));
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
