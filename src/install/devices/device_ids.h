// What can be said of devices from their IDs alone.
#pragma once

#include "common/text.h"

// A device's ID is its instance ID cut at the last backslash.
std::wstring DeviceIdOf(std::wstring_view instanceId);

// The ID of the whole device behind an interface ID: upper-cased, and cut at the last '&' when it
// contains "&MI_". At most 199 characters.
std::wstring BaseIdOf(std::wstring_view deviceId);

// How many entries of `packetIds` have the base ID of `deviceId`: the number of functions that the
// packet leads one to expect of that device.
std::size_t ExpectedMatches(const TextList& packetIds, std::wstring_view deviceId);

// The IDs of whole (composite) devices that a packet's hardware IDs stand for.
struct CompositeIds {
    // Upper-cased and distinct. IDs that the packet lists without "&MI_" (exact IDs) stand in
    // front, the last one met first; those derived from interface IDs follow in the order met.
    TextList Ids;
    // True when any exact ID was met, also one that was already in the list as a derived one.
    bool ExactMatchFound = false;
};
CompositeIds CompositeIdsOf(const TextList& hardwareIds);

// True when a hardware ID names the device to switch by control code: equal but for its "&REV_"
// part, case ignored. `configured` itself is not cut.
bool MatchesShiftDevice(std::wstring_view hardwareId, std::wstring_view configured);

// The place of a device class in the order in which INF files are offered: PORTS 1, MODEM 2, NET 3,
// MEDIA 4, no class 5. Every other class is 0 and so comes first. `className` is upper-cased.
std::uint32_t RankOfClass(std::wstring_view className);
inline constexpr std::uint32_t RankOfUnreadableClass = 5;
