#include "inf/models.h"

#include "common/checked.h"
#include "common/limits.h"
#include "inf/decorations.h"
#include "platform/platform.h"

namespace {

// The models sections that a manufacturer line names and that apply to this machine.
TextList ModelsSections(const InfLine& manufacturer) {
    TextList names;
    for (std::size_t index = 1; index < manufacturer.Fields.size(); ++index) {
        const std::wstring& models = manufacturer.Fields[1];
        const std::wstring& decoration = manufacturer.Fields[index];
        if (index == 1) {
            names.push_back(Cut(models, PathCapacity));
        } else if (MatchPlatformDecoration(decoration)) {
            // An empty decoration gives a name with a final dot, which is looked up as it stands.
            names.push_back(Cut(models + L"." + decoration, PathCapacity));
        }
    }
    return names;
}

} // namespace

bool MatchPlatformDecoration(std::wstring_view decoration) {
    SYSTEM_INFO system{};
    GetSystemInfo(&system);
    return DecorationApplies(decoration, system.wProcessorArchitecture);
}

bool GetInfModelsText(const std::wstring& infPath, InfLineList& lines) {
    if (infPath.empty()) {
        return false;
    }
    lines.clear();
    InfLineList manufacturers;
    if (!GetInfSectionText(infPath, L"Manufacturer", manufacturers)) {
        return false;
    }
    for (const InfLine& manufacturer : manufacturers) {
        for (const std::wstring& name : ModelsSections(manufacturer)) {
            InfLineList section;
            if (!GetInfSectionText(infPath, name, section)) {
                return false;
            }
            lines.insert(lines.end(), section.begin(), section.end());
        }
    }
    return true;
}

bool GetInstallSectionsFromInf(const std::wstring& infPath, TextList& sections) {
    if (infPath.empty()) {
        return false;
    }
    sections.clear();
    InfLineList models;
    if (!GetInfModelsText(infPath, models)) {
        return false;
    }
    for (const InfLine& line : models) {
        AppendDistinct(sections, CheckedAt(line.Fields, 1));
    }
    return true;
}

bool GetDeviceIDFromInf(const std::wstring& infPath, DeviceIdList& ids) {
    if (infPath.empty()) {
        return false;
    }
    ids.clear();
    InfLineList models;
    if (!GetInfModelsText(infPath, models)) {
        return false;
    }
    for (const InfLine& line : models) {
        for (std::size_t index = 2; index < line.Fields.size(); ++index) {
            AppendDistinct(ids, line.Fields[index]);
        }
    }
    return true;
}
