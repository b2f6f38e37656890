#include "drivers/inf_file.h"

#include "originals.h"

#include <cwchar>

namespace {

// Longer fields do not occur in packets of the lab.
constexpr DWORD FieldLength = 1024;

std::wstring Field(INFCONTEXT* line, DWORD index) {
    wchar_t text[FieldLength] = {};
    const BOOL read = SETUPAPI(SetupGetStringFieldW)(line, index, text, FieldLength, nullptr);
    return read ? text : L"";
}

std::vector<std::wstring> Fields(INFCONTEXT* line) {
    std::vector<std::wstring> fields;
    const DWORD count = SETUPAPI(SetupGetFieldCount)(line);
    for (DWORD i = 0; i <= count; ++i) {
        fields.push_back(Field(line, i));
    }
    return fields;
}

bool IsForX64(const std::wstring& decoration) {
    return _wcsnicmp(decoration.c_str(), L"NTamd64", 7) == 0 ||
           _wcsicmp(decoration.c_str(), L"NT") == 0;
}

void AppendModels(const InfFile& inf, const std::wstring& manufacturer, const std::wstring& section,
                  std::vector<Model>& models) {
    for (const auto& line : inf.Lines(section)) {
        if (line.size() > 2) {
            models.push_back({manufacturer, line[0], line[1], line[2]});
        }
    }
}

} // namespace

InfFile::InfFile(const std::wstring& path)
    : handle_(SETUPAPI(SetupOpenInfFileW)(path.c_str(), nullptr, INF_STYLE_WIN4, nullptr)) {}

InfFile::~InfFile() {
    if (IsOpen()) {
        const LastErrorKeeper keeper;
        SETUPAPI(SetupCloseInfFile)(handle_);
    }
}

std::vector<std::vector<std::wstring>> InfFile::Lines(const std::wstring& section) const {
    std::vector<std::vector<std::wstring>> lines;
    INFCONTEXT line;
    BOOL found = SETUPAPI(SetupFindFirstLineW)(handle_, section.c_str(), nullptr, &line);
    while (found) {
        lines.push_back(Fields(&line));
        found = SETUPAPI(SetupFindNextLine)(&line, &line);
    }
    return lines;
}

std::wstring InfFile::Value(const std::wstring& section, const std::wstring& key) const {
    INFCONTEXT line;
    const BOOL found = SETUPAPI(SetupFindFirstLineW)(handle_, section.c_str(), key.c_str(), &line);
    return found ? Field(&line, 1) : L"";
}

std::vector<Model> ModelsOf(const InfFile& inf) {
    std::vector<Model> models;
    for (const auto& line : inf.Lines(L"Manufacturer")) {
        if (line.size() < 2) {
            continue;
        }
        AppendModels(inf, line[0], line[1], models);
        for (std::size_t i = 2; i < line.size(); ++i) {
            if (IsForX64(line[i])) {
                AppendModels(inf, line[0], line[1] + L"." + line[i], models);
            }
        }
    }
    return models;
}

std::vector<std::wstring> SourceFilesOf(const InfFile& inf) {
    std::vector<std::wstring> files;
    for (const wchar_t* section : {L"SourceDisksFiles", L"SourceDisksFiles.amd64"}) {
        for (const auto& line : inf.Lines(section)) {
            files.push_back(line[0]);
        }
    }
    return files;
}
