// Device information sets: what they remember between the program's calls.
#pragma once

#include "machine/call.h"

namespace machine {

// A built driver list.
struct DriverList {
    bool Built = false;
    std::vector<DriverEntry> Entries;
};

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
// The record of the member at this place.
void FillDevInfo(const DeviceSet& set, std::size_t member, SP_DEVINFO_DATA& data);

// "set1, USB\VID_...\1" for the journal.
Argument DeviceName(HDEVINFO handle, const SP_DEVINFO_DATA* data);

// What an installation leaves on a device.
void InstallOn(State& state, Node& node, const std::wstring& infPath);
// Copies an INF into the store under the next free name (or finds it there); its name.
std::wstring StageInf(State& state, const std::wstring& sourcePath);
// The answer that the test ordered for this installation, used up by asking.
std::optional<Machine::InstallAnswer> OrderedAnswer(State& state, const std::wstring& id,
                                                    const std::wstring& infPath);

} // namespace machine
