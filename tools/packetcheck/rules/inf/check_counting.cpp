// What IDs of several INF files mean together: counting, uninstalling, drivers of Windows.
#include "rules/families.h"
#include "rules/inf/models_text.h"
#include "rules/inf/windows_files.h"
#include "rules/setting_lookup.h"

#include "install/composite/composite_id_list.h"

#include <algorithm>

namespace rules {

namespace {

struct Listing {
    const PacketInf* Inf;
    std::wstring Id;
};

std::vector<Listing> ListingsOf(const PacketGeneration& generation) {
    std::vector<Listing> listings;
    for (const PacketInf& inf : generation.Infs) {
        for (const std::wstring& id : inf.Ids) {
            listings.push_back({&inf, id});
        }
    }
    return listings;
}

Place PlaceOf(const Listing& listing) {
    return {listing.Inf->Shown, LineOfId(ModelsOf(listing.Inf->Text), listing.Id)};
}

// The earlier listing of the same ID in another INF; null when there is none.
const Listing* Earlier(const std::vector<Listing>& listings, const Listing& listing) {
    for (const Listing& other : listings) {
        if (&other == &listing) {
            return nullptr;
        }
        if (other.Inf != listing.Inf && EqualIgnoringCase(other.Id, listing.Id)) {
            return &other;
        }
    }
    return nullptr;
}

bool IsFunction(const std::wstring& id) {
    return Contains(UpperCase(id), L"&MI_");
}

bool HasFunctions(const std::vector<Listing>& listings, const std::wstring& whole) {
    const std::wstring start = UpperCase(whole) + L"&MI_";
    return std::any_of(listings.begin(), listings.end(), [&start](const Listing& listing) {
        return UpperCase(listing.Id).starts_with(start);
    });
}

void CheckTwice(const PacketGeneration& generation, const std::vector<Listing>& listings,
                bool counts, Findings& findings) {
    for (const Listing& listing : listings) {
        const Listing* const first = Earlier(listings, listing);
        // Copies of whole files are told of by themselves.
        if (first == nullptr || first->Inf->File.Lines == listing.Inf->File.Lines) {
            continue;
        }
        const RuleId rule = counts ? RuleId::IdInTwoInfs : RuleId::IdInTwoInfsMatched;
        findings.push_back({rule, PlaceOf(listing),
                            listing.Id + L" is listed in " + first->Inf->Name +
                                L" as well, which gets the device on " + generation.For.Name});
    }
}

void CheckWholeDevices(const std::vector<Listing>& listings, Findings& findings) {
    for (const Listing& listing : listings) {
        if (!IsFunction(listing.Id) && HasFunctions(listings, listing.Id) &&
            listing.Inf->ClassName != L"USB") {
            findings.push_back({RuleId::WholeDeviceBesideFunctions, PlaceOf(listing),
                                listing.Id + L" is the whole device whose functions are listed"});
        }
    }
}

} // namespace

void CheckCounting(const Packet& packet, const PacketGeneration& generation, Findings& findings) {
    const std::vector<Listing> listings = ListingsOf(generation);
    const SettingLookup settings(packet, generation.For);
    const std::int32_t mode = settings.Number(L"INSTALL", L"MODE");
    const bool counts =
        (mode == 1 || mode == 2) && settings.Number(L"USERSETTING", L"MATCHMODE") == 0;
    CheckTwice(generation, listings, counts, findings);
    CheckWholeDevices(listings, findings);
}

void CheckUninstalledIds(const PacketGeneration& generation, Findings& findings) {
    TextList all;
    for (const Listing& listing : ListingsOf(generation)) {
        all.push_back(listing.Id);
    }
    TextList wanted;
    bool exactMatchFound = false;
    AddCompositeIds(all, wanted, exactMatchFound);
    for (const std::wstring& id : wanted) {
        for (const std::wstring& other : wanted) {
            // More behind an & names the same device more closely: a subsystem, a revision.
            const bool isCloser = other.starts_with(id + L"&");
            if (id.empty() || id == other || isCloser || !other.starts_with(id)) {
                continue;
            }
            findings.push_back({RuleId::IdBeginsAnother,
                                {generation.For.Folder(), 0},
                                id + L" is the beginning of " + other});
        }
    }
    for (const PacketFile& file : generation.Files) {
        if (!file.IsFolder && !Contains(file.Name, L"\\") &&
            UpperCase(file.Name).ends_with(L".SYS") && ComesWithWindows(file.Name)) {
            findings.push_back({RuleId::DriverNamedLikeWindows,
                                {generation.For.Folder() + L"\\" + file.Name, 0},
                                file.Name + L" is a driver of Windows"});
        }
    }
}

} // namespace rules
