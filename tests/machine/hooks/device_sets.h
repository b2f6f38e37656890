// Device information sets: what they remember between the program's calls.
#pragma once

#include "machine/call.h"

namespace machine {

// A driver list that was built.
using DriverList = std::vector<DriverEntry>;

// A device in a set, or the set itself for calls without a device.
struct SetMember {
    Node* Owner = nullptr;
    SP_DEVINSTALL_PARAMS_W Install{};
    std::vector<unsigned char> ClassInstall;
    std::map<DWORD, DriverList> Lists; // by SPDIT_...
    std::optional<DriverEntry> SelectedDriver;
};

struct SetInterface {
    std::size_t Member = 0;
    Interface What;
    bool Active = true;
};

struct DeviceSet {
    std::deque<SetMember> Members;
    std::vector<SetInterface> Interfaces;
    SetMember Global;
    SetMember* Selected = nullptr;
};

// A function's device set and element, checked as Windows checks them; the error is kept in the
// call.
DeviceSet* SetOf(Call& call, HDEVINFO handle);
SetMember* MemberOf(Call& call, DeviceSet& set, const SP_DEVINFO_DATA* data);
// The same, `data` may be null: the set itself.
SetMember* MemberOrGlobal(Call& call, DeviceSet& set, const SP_DEVINFO_DATA* data);
// Both at once for a call that does not fail; no member: the call has its error.
struct SetTarget {
    DeviceSet* Set = nullptr;
    SetMember* Member = nullptr;
};
SetTarget TargetOf(Call& call, HDEVINFO handle, const SP_DEVINFO_DATA* data);

// The record of the member at this place.
void FillDevInfo(const DeviceSet& set, std::size_t member, SP_DEVINFO_DATA& data);
GUID ClassGuidOf(const Device& device);

// "set1, USB\VID_...\1" and the kind of a GUID, for the journal.
Argument DeviceName(HDEVINFO handle, const SP_DEVINFO_DATA* data);
std::string GuidName(const GUID* guid);

// The driver that a record from an enumeration stands for, or null.
const DriverEntry* EntryOf(const SetMember& member, const SP_DRVINFO_DATA_V2_W* driver);

} // namespace machine
