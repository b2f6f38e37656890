// Setup.ini and Lang.ini are read for real. Each setting is written down with the section that it
// came from.
#include "rehearsal/imports.h"
#include "rehearsal/library_functions.h"

#include <algorithm>
#include <array>

namespace rehearsal {

namespace {

// Keys are looked up in sections that become ever less special; the plain one comes last.
bool IsPlainSection(std::wstring_view section) {
    return !Contains(section, L".");
}

void WriteSetting(Stage& stage, const wchar_t* section, const wchar_t* key, std::wstring value,
                  bool decides) {
    if (!decides && !IsPlainSection(section)) {
        return;
    }
    const std::wstring_view name(section);
    stage.Write({.What = Deed::SettingRead,
                 .Subject = key,
                 .Object = std::wstring(name.substr(0, name.find(L'.'))),
                 .Text = std::move(value),
                 .Source = decides ? std::wstring(name) : std::wstring()});
}

bool IsSettings(std::wstring_view path) {
    return EqualIgnoringCase(AfterLast(path, L'\\'), L"Setup.ini");
}

std::wstring TrimmedUpperCase(std::wstring_view name) {
    const std::size_t begin = name.find_first_not_of(L" \t");
    return begin == std::wstring_view::npos
               ? std::wstring()
               : UpperCase(name.substr(begin, name.find_last_not_of(L" \t") - begin + 1));
}

// Nothing when there are too many to list.
std::optional<std::set<std::wstring>> SectionNames(const std::wstring& path) {
    constexpr std::size_t Plenty = 16384;
    std::wstring names(Plenty, L'\0');
    names.resize(GetPrivateProfileSectionNamesW(names.data(), Plenty, path.c_str()));
    if (names.size() + 2 >= Plenty) {
        return std::nullopt;
    }
    std::set<std::wstring> result;
    for (std::size_t begin = 0; begin < names.size();) {
        const std::size_t end = std::min(names.find(L'\0', begin), names.size());
        result.insert(TrimmedUpperCase(std::wstring_view(names).substr(begin, end - begin)));
        begin = end + 1;
    }
    return result;
}

// Most sections that a run asks for are not there, and each question opens the file anew.
bool MayHaveSection(Stage& stage, const std::wstring& path, std::wstring_view section) {
    const auto [entry, isNew] = stage.Files().Sections.try_emplace(path);
    if (isNew) {
        entry->second = SectionNames(path);
    }
    return !entry->second || entry->second->count(TrimmedUpperCase(section)) != 0;
}

std::wstring ReadText(Stage& stage, const wchar_t* section, const wchar_t* key,
                      const wchar_t* otherwise, DWORD size, const std::wstring& path) {
    const auto [entry, isNew] = stage.Files().Texts.try_emplace({path, section, key, size});
    if (isNew && !MayHaveSection(stage, path, section)) {
        entry->second = otherwise;
    } else if (isNew) {
        std::wstring buffer(size, L'\0');
        GetPrivateProfileStringW(section, key, otherwise, buffer.data(), size, path.c_str());
        entry->second = buffer.c_str();
    }
    return entry->second;
}

UINT ReadNumber(Stage& stage, const wchar_t* section, const wchar_t* key, INT otherwise,
                const std::wstring& path) {
    const auto [entry, isNew] = stage.Files().Numbers.try_emplace({path, section, key});
    if (isNew) {
        entry->second = MayHaveSection(stage, path, section)
                            ? GetPrivateProfileIntW(section, key, otherwise, path.c_str())
                            : static_cast<UINT>(otherwise);
    }
    return entry->second;
}

DWORD WINAPI ProfileString(LPCWSTR section, LPCWSTR key, LPCWSTR otherwise, LPWSTR buffer,
                           DWORD size, LPCWSTR path) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        *buffer = L'\0';
        return 0;
    }
    const std::wstring text =
        ReadText(*stage, section, key, otherwise, size, stage->RealPath(path));
    if (IsSettings(path)) {
        WriteSetting(*stage, section, key, text, !text.empty());
    } else {
        stage->Write({.What = Deed::TextShown, .Subject = key, .Object = section, .Text = text});
    }
    buffer[text.copy(buffer, size - 1)] = L'\0';
    return static_cast<DWORD>(text.size());
}

UINT WINAPI ProfileInt(LPCWSTR section, LPCWSTR key, INT otherwise, LPCWSTR path) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return static_cast<UINT>(otherwise);
    }
    const UINT value = ReadNumber(*stage, section, key, otherwise, stage->RealPath(path));
    const bool decides = value != static_cast<UINT>(otherwise);
    WriteSetting(*stage, section, key,
                 decides ? std::to_wstring(static_cast<INT>(value)) : std::wstring(), decides);
    return value;
}

// What the stand-in for the version functions passes on: the kernel's product version.
struct VersionBlock {
    std::array<WORD, 2> Translation;
    std::array<wchar_t, 64> ProductVersion;
};

BOOL WINAPI FileVersionInfo(LPCWSTR /*file*/, DWORD /*handle*/, DWORD size, LPVOID data) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr || stage->Where().KernelVersion.empty() || size < sizeof(VersionBlock)) {
        return FailWith(FALSE, ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    auto* const block = new (data) VersionBlock{{0x0409, 0x04B0}, {}};
    stage->Where().KernelVersion.copy(block->ProductVersion.data(),
                                      block->ProductVersion.size() - 1);
    return TRUE;
}

BOOL WINAPI VersionValue(LPCVOID data, LPCWSTR query, LPVOID* value, PUINT size) {
    auto* const block = static_cast<VersionBlock*>(const_cast<void*>(data));
    if (Contains(query, L"Translation")) {
        *value = block->Translation.data();
        *size = sizeof(block->Translation);
    } else {
        *value = block->ProductVersion.data();
        *size = static_cast<UINT>(block->ProductVersion.size());
    }
    return TRUE;
}

} // namespace

FARPROC VersionFunction(std::string_view name) {
    if (name == "GetFileVersionInfoW") {
        return AddressOf(&FileVersionInfo);
    }
    return name == "VerQueryValueW" ? AddressOf(&VersionValue) : nullptr;
}

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(GetPrivateProfileStringW, ProfileString);
REHEARSED(GetPrivateProfileIntW, ProfileInt);
REHEARSED(GetFileVersionInfoW, FileVersionInfo);
REHEARSED(VerQueryValueW, VersionValue);
