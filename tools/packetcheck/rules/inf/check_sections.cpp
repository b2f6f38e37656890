// Models lines, install sections and the services that belong to them.
#include "rules/families.h"
#include "rules/inf/models_text.h"

#include <algorithm>
#include <array>

namespace rules {

namespace {

using reading::InfEntry;
using reading::InfSection;
using reading::InfText;

// The decorations under which 64-bit Windows looks for an install section, the first one first.
constexpr std::array<std::wstring_view, 3> WindowsOrder{L"NTamd64", L"NT", L""};

// The sections of an install section's name with a decoration that carries a Windows version.
std::vector<const InfSection*> VersionedSections(const InfText& inf, const std::wstring& install) {
    std::vector<const InfSection*> found;
    const std::wstring start = UpperCase(install) + L".NTAMD64.";
    for (const InfSection& section : inf.Sections()) {
        const std::wstring name = UpperCase(section.Name);
        const bool isPart = name.ends_with(L".SERVICES") || name.ends_with(L".HW") ||
                            name.ends_with(L".COINSTALLERS") || name.ends_with(L".WDF") ||
                            name.ends_with(L".INTERFACES");
        if (name.starts_with(start) && !isPart) {
            found.push_back(&section);
        }
    }
    return found;
}

// The section that Windows takes, leaving versions aside; null when there is none.
const InfSection* TakenByWindows(const InfText& inf, const std::wstring& install) {
    for (const std::wstring_view decoration : WindowsOrder) {
        if (const InfSection* const section = inf.Find(Decorated(install, decoration))) {
            return section;
        }
    }
    return nullptr;
}

bool ExistsSomehow(const InfText& inf, const std::wstring& install) {
    const std::wstring start = UpperCase(install) + L".";
    return inf.Find(install) != nullptr ||
           std::any_of(inf.Sections().begin(), inf.Sections().end(),
                       [&start](const InfSection& section) {
                           return UpperCase(section.Name).starts_with(start);
                       });
}

void CheckModelsLines(const PacketInf& inf, const std::vector<ModelsLine>& models,
                      Findings& findings) {
    TextList reported;
    for (const ModelsLine& line : models) {
        if (line.By == Reader::Nobody || line.By == Reader::Unstamped) {
            continue;
        }
        if (line.Install.empty()) {
            findings.push_back({RuleId::ModelsLineWithoutInstallSection,
                                {inf.Shown, line.Line},
                                L"no install section is named"});
        } else if (!ExistsSomehow(inf.Text, line.Install) && !ListHolds(reported, line.Install)) {
            reported.push_back(line.Install);
            findings.push_back(
                {RuleId::InstallSectionMissing,
                 {inf.Shown, line.Line},
                 L"there is no section [" + line.Install + L"], with or without a decoration"});
        }
    }
}

std::size_t LineOfCopyFiles(const InfText& inf, const std::wstring& section) {
    const auto entries = inf.Entries(section, L"CopyFiles");
    return entries.empty() ? 0 : entries.front()->Line;
}

// Files that only sections name which the program does not read.
void CheckWhereListed(const PacketInf& inf, const std::wstring& install, Findings& findings) {
    const InfText& text = inf.Text;
    if (!CopySectionsOf(text, {install}).empty()) {
        return;
    }
    if (const std::size_t line = LineOfCopyFiles(text, install)) {
        findings.push_back({RuleId::BareInstallSectionOnly,
                            {inf.Shown, line},
                            L"CopyFiles stands in the bare [" + install + L"] only"});
        return;
    }
    for (const InfSection* section : VersionedSections(text, install)) {
        if (const std::size_t line = LineOfCopyFiles(text, section->Name)) {
            findings.push_back({RuleId::CopyListInVersionedSection,
                                {inf.Shown, line},
                                L"CopyFiles stands in [" + section->Name + L"] only"});
            return;
        }
    }
}

void CheckServices(const PacketInf& inf, const std::wstring& install, Findings& findings) {
    const InfText& text = inf.Text;
    const InfSection* const taken = TakenByWindows(text, install);
    if (taken == nullptr || text.Find(taken->Name + L".Services") != nullptr ||
        !VersionedSections(text, install).empty()) {
        return;
    }
    for (const std::wstring_view decoration : WindowsOrder) {
        const std::wstring name = Decorated(install, decoration) + L".Services";
        if (const InfSection* const services = text.Find(name)) {
            findings.push_back({RuleId::ServicesUnderAnotherDecoration,
                                {inf.Shown, services->Line},
                                L"Windows installs [" + taken->Name + L"] and looks for [" +
                                    taken->Name + L".Services], not for [" + services->Name +
                                    L"]"});
            return;
        }
    }
}

void CheckCopyFilesEntry(const PacketInf& inf, const InfEntry& entry, Findings& findings) {
    for (const std::wstring& value : entry.Values) {
        if (value.starts_with(L"@")) {
            findings.push_back(
                {RuleId::CopyFileByName,
                 {inf.Shown, entry.Line},
                 L"CopyFiles names the file " + value.substr(1) + L" and no section"});
        } else if (!value.empty() && inf.Text.Find(value) == nullptr) {
            findings.push_back({RuleId::CopySectionMissing,
                                {inf.Shown, entry.Line},
                                L"there is no section [" + value + L"]"});
        }
    }
}

void CheckCopyFiles(const PacketInf& inf, const std::wstring& install, Findings& findings) {
    for (const std::wstring_view decoration : WindowsOrder) {
        for (const InfEntry* entry :
             inf.Text.Entries(Decorated(install, decoration), L"CopyFiles")) {
            CheckCopyFilesEntry(inf, *entry, findings);
        }
    }
}

} // namespace

void CheckInstallSections(const PacketInf& inf, Findings& findings) {
    const std::vector<ModelsLine> models = ModelsOf(inf.Text);
    CheckModelsLines(inf, models, findings);
    for (const std::wstring& install : InstallSectionsOf(models)) {
        CheckWhereListed(inf, install, findings);
        CheckServices(inf, install, findings);
        CheckCopyFiles(inf, install, findings);
    }
}

} // namespace rules
