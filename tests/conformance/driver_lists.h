// Driver lists in the words of a check.
#pragma once

#include "conformance/sets.h"

namespace conformance {

// A device element, and its list of drivers once built. The list goes with its set.
struct DriverList {
    HDEVINFO Set = nullptr;
    SP_DEVINFO_DATA Device{};
    DWORD Type = SPDIT_COMPATDRIVER;

    BOOL Build();
    // The entry at the index; false behind the last.
    BOOL At(DWORD index, SP_DRVINFO_DATA_W& entry);
    // The descriptions of all entries.
    [[nodiscard]] Texts Descriptions();
    // The entry with this description; throws when there is none.
    [[nodiscard]] SP_DRVINFO_DATA_W Entry(const std::wstring& description);
};

// The same list, of one INF or one folder of INFs alone.
DriverList OnlyFrom(const Set& set, const std::wstring& id, const std::wstring& path,
                    DWORD type = SPDIT_COMPATDRIVER);

// A block for SetupDiGetDriverInfoDetailW.
struct DriverDetail {
    alignas(8) unsigned char Block[4096] = {};

    BOOL Read(DriverList& list, SP_DRVINFO_DATA_W& entry, DWORD size, DWORD* needed = nullptr);
    [[nodiscard]] SP_DRVINFO_DETAIL_DATA_W& Data() {
        return *reinterpret_cast<SP_DRVINFO_DETAIL_DATA_W*>(Block);
    }
    // The texts of the ID list, to its empty text.
    [[nodiscard]] Texts Ids() const;
};

// SetupDiGetDriverInfoDetailW without a buffer.
BOOL AskDetailSize(DriverList& list, SP_DRVINFO_DATA_W& entry, DWORD size, DWORD* needed);

} // namespace conformance
