// Device IDs of one INF.
#include "rules/families.h"
#include "rules/inf/models_text.h"

#include <algorithm>

namespace rules {

namespace {

bool IsGeneric(const std::wstring& upper) {
    return upper.starts_with(L"USB\\CLASS_") || upper == L"USB\\COMPOSITE" ||
           upper == L"USB\\UNKNOWN" || upper.starts_with(L"USB\\ROOT_HUB") ||
           upper.starts_with(L"USB\\MS_COMP_") || upper == L"GENCDROM" || upper == L"GENDISK" ||
           upper == L"USBSTOR\\GENCDROM" || upper == L"USBSTOR\\GENDISK";
}

bool AreHexDigits(std::wstring_view text) {
    return text.size() == 4 &&
           text.find_first_not_of(L"0123456789ABCDEF") == std::wstring_view::npos;
}

// USB\VID_1234&PID_5678, with whatever behind it.
bool IsWholeUsbId(const std::wstring& upper) {
    constexpr std::wstring_view Vendor = L"USB\\VID_";
    constexpr std::wstring_view Product = L"&PID_";
    const std::size_t product = Vendor.size() + 4;
    const std::wstring_view id = upper;
    return id.starts_with(Vendor) && AreHexDigits(id.substr(Vendor.size(), 4)) &&
           id.substr(product).starts_with(Product) &&
           AreHexDigits(id.substr(product + Product.size(), 4)) &&
           (id.size() == product + Product.size() + 4 || id[product + Product.size() + 4] == L'&');
}

// The ID without its "&REV_1234".
std::wstring WithoutRevision(const std::wstring& upper) {
    const std::size_t begin = upper.find(L"&REV_");
    const std::size_t end = begin == std::wstring::npos ? begin : upper.find(L'&', begin + 1);
    return upper.substr(0, begin) + (end == std::wstring::npos ? L"" : upper.substr(end));
}

bool AnyInfLists(const PacketGeneration& generation, const std::wstring& id) {
    return std::any_of(generation.Infs.begin(), generation.Infs.end(),
                       [&id](const PacketInf& inf) { return ListHolds(inf.Ids, id); });
}

void CheckOneId(const PacketGeneration& generation, const PacketInf& inf, const std::wstring& id,
                std::size_t line, Findings& findings) {
    const std::wstring upper = UpperCase(id);
    const Place place{inf.Shown, line};
    if (id.empty()) {
        findings.push_back({RuleId::EmptyId, place, L"an ID is empty"});
    } else if (IsGeneric(upper)) {
        findings.push_back({RuleId::GenericId, place, id + L" names a class of devices"});
    } else if (!Contains(id, L"\\")) {
        findings.push_back({RuleId::IdWithoutEnumerator, place, id + L" names no bus"});
    } else if (upper.starts_with(L"USB\\") && !IsWholeUsbId(upper)) {
        findings.push_back({RuleId::ShortId, place,
                            id + L" has no whole vendor and product part of four digits each"});
    } else if (upper.starts_with(L"USB\\") && Contains(upper, L"&REV_") &&
               !AnyInfLists(generation, WithoutRevision(upper))) {
        findings.push_back(
            {RuleId::RevisionOnly, place,
             id + L" has a revision, and " + WithoutRevision(upper) + L" is not listed"});
    }
}

std::wstring Joined(const TextList& ids) {
    constexpr std::size_t Shown = 3;
    std::wstring text;
    for (std::size_t index = 0; index < std::min(ids.size(), Shown); ++index) {
        text += (index == 0 ? L"" : L", ") + ids[index];
    }
    return ids.size() > Shown ? text + L", ..." : text;
}

// The lines of one models section that name IDs which the program knows from nowhere.
struct UnreadSection {
    std::wstring Models;
    std::wstring Decoration;
    std::size_t Line = 0;
    TextList Ids;
    std::wstring Lines; // as they would stand in a section to add
};

void AddUnread(const ModelsLine& line, const TextList& known,
               std::vector<UnreadSection>& sections) {
    TextList unread;
    std::wstring copied = line.Description + L" = " + line.Install;
    for (const std::wstring& id : line.Ids) {
        copied += L", " + id;
        if (!id.empty() && !ListHolds(known, id)) {
            unread.push_back(id);
        }
    }
    if (unread.empty()) {
        return;
    }
    auto section = std::find_if(sections.begin(), sections.end(), [&line](const auto& entry) {
        return entry.Models == line.Models && entry.Decoration == line.Decoration;
    });
    if (section == sections.end()) {
        sections.push_back({line.Models, line.Decoration, line.Line, {}, {}});
        section = sections.end() - 1;
    }
    section->Ids.insert(section->Ids.end(), unread.begin(), unread.end());
    section->Lines += copied + L"\n";
}

void CheckUnread(const PacketInf& inf, const std::vector<ModelsLine>& models, Findings& findings) {
    std::vector<UnreadSection> sections;
    for (const ModelsLine& line : models) {
        if (line.By == Reader::WindowsOnly) {
            AddUnread(line, inf.Ids, sections);
        }
    }
    for (const UnreadSection& section : sections) {
        findings.push_back(
            {RuleId::IdNotRead,
             {inf.Shown, section.Line},
             std::to_wstring(section.Ids.size()) + L" IDs stand only in [" +
                 Decorated(section.Models, section.Decoration) + L"]: " + Joined(section.Ids),
             L"Add NTamd64 to the line of " + section.Models + L" in [Manufacturer], and\n[" +
                 section.Models + L".NTamd64]\n" + section.Lines});
    }
}

bool AnyBy(const std::vector<ModelsLine>& models, Reader by) {
    return std::any_of(models.begin(), models.end(),
                       [by](const ModelsLine& line) { return line.By == by && !line.Ids.empty(); });
}

// An INF from which the program learns nothing.
void CheckWithoutIds(const PacketInf& inf, const std::vector<ModelsLine>& models,
                     Findings& findings) {
    if (!inf.Readable || !inf.Ids.empty() || AnyBy(models, Reader::WindowsOnly)) {
        return;
    }
    if (AnyBy(models, Reader::Unstamped)) {
        return;
    }
    if (AnyBy(models, Reader::Nobody)) {
        findings.push_back({RuleId::InfForAnotherMachine,
                            {inf.Shown, 0},
                            L"all its models are for other architectures"});
    } else {
        findings.push_back({RuleId::InfWithoutIds, {inf.Shown, 0}, L"no ID is listed"});
    }
}

void CheckUnstamped(const PacketInf& inf, const std::vector<ModelsLine>& models,
                    Findings& findings) {
    for (const ModelsLine& line : models) {
        if (line.By == Reader::Unstamped) {
            findings.push_back(
                {RuleId::InfNotStamped,
                 {inf.Shown, line.Line},
                 L"the section is [" + Decorated(line.Models, line.Decoration) + L"]"});
            return;
        }
    }
}

} // namespace

void CheckIds(const PacketGeneration& generation, const PacketInf& inf, Findings& findings) {
    const std::vector<ModelsLine> models = ModelsOf(inf.Text);
    for (const std::wstring& id : inf.Ids) {
        CheckOneId(generation, inf, id, LineOfId(models, id), findings);
    }
    CheckUnread(inf, models, findings);
    CheckUnstamped(inf, models, findings);
    CheckWithoutIds(inf, models, findings);
}

} // namespace rules
