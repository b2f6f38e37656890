// Device information sets: making, walking and destroying them.
#include "machine/hooks/device_sets.h"

#include <algorithm>

namespace machine {

namespace {

static_assert(sizeof(SP_DEVINSTALL_PARAMS_W) == 584);
static_assert(sizeof(SP_DEVINFO_DATA) == 32);

std::wstring EnumeratorOf(const Device& device) {
    return device.InstanceId.substr(0, device.InstanceId.find(L'\\'));
}

SetMember MakeMember(Node* owner) {
    SetMember member;
    member.Owner = owner;
    member.Install.cbSize = sizeof(member.Install);
    if (owner != nullptr) {
        const Device& device = owner->Description;
        member.Install.FlagsEx = device.FlagsEx;
        device.DriverPath.copy(member.Install.DriverPath, MAX_PATH - 1);
    }
    return member;
}

// Enumerator, device and instance, as keys of the registry are ordered.
WideTexts PartsOf(const std::wstring& instanceId) {
    WideTexts parts;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::wstring::npos; begin = end + 1) {
        end = parts.size() == 2 ? std::wstring::npos : instanceId.find(L'\\', begin);
        parts.push_back(Upper(instanceId.substr(begin, end - begin)));
    }
    return parts;
}

// The nodes in the order in which this Windows enumerates them.
std::vector<Node*> OrderedNodes(State& state) {
    std::vector<Node*> nodes;
    for (Node& node : state.Nodes) {
        nodes.push_back(&node);
    }
    if (state.Windows.Devices != Variants::Order::ByArrival) {
        std::stable_sort(nodes.begin(), nodes.end(), [](const Node* left, const Node* right) {
            return PartsOf(left->Description.InstanceId) < PartsOf(right->Description.InstanceId);
        });
    }
    if (state.Windows.Devices == Variants::Order::Reversed) {
        std::reverse(nodes.begin(), nodes.end());
    }
    return nodes;
}

// An enumerator, with or without a device behind it, or a whole instance ID.
bool IsBelow(const Device& device, const wchar_t* enumerator) {
    const std::wstring wanted = enumerator;
    return StartsWith(device.InstanceId, wanted + L"\\") || SameText(device.InstanceId, wanted);
}

bool Belongs(const Node& node, const wchar_t* enumerator, DWORD flags) {
    const Device& device = node.Description;
    return !device.Removed && ((flags & DIGCF_PRESENT) == 0 || device.Present) &&
           (enumerator == nullptr || IsBelow(device, enumerator));
}

void AddInterfaces(Node& node, const GUID* guid, DWORD flags, DeviceSet& set) {
    bool member = false;
    for (const Interface& offered : node.Description.Interfaces) {
        const bool active = offered.Active && node.Description.Present;
        if ((guid != nullptr && offered.ClassGuid != *guid) ||
            ((flags & DIGCF_PRESENT) != 0 && !active)) {
            continue;
        }
        if (!member) {
            set.Members.push_back(MakeMember(&node));
            member = true;
        }
        set.Interfaces.push_back({set.Members.size() - 1, offered, active});
    }
}

// The interfaces of one class (of all, when it is null) and their devices.
void CollectInterfaces(State& state, const GUID* guid, const wchar_t* instanceId, DWORD flags,
                       DeviceSet& set) {
    for (Node* node : OrderedNodes(state)) {
        if (Belongs(*node, instanceId, flags)) {
            AddInterfaces(*node, guid, flags, set);
        }
    }
}

void CollectDevices(State& state, const GUID* guid, const wchar_t* enumerator, DWORD flags,
                    DeviceSet& set) {
    for (Node* node : OrderedNodes(state)) {
        const bool ofClass = guid == nullptr || ClassGuidOf(node->Description) == *guid;
        if (ofClass && Belongs(*node, enumerator, flags)) {
            set.Members.push_back(MakeMember(node));
        }
    }
}

bool EnumeratorExists(const State& state, const std::wstring& name) {
    const std::wstring enumerator = name.substr(0, name.find(L'\\'));
    return SameText(enumerator, L"USB") ||
           std::any_of(state.Nodes.begin(), state.Nodes.end(), [&](const Node& node) {
               return SameText(EnumeratorOf(node.Description), enumerator);
           });
}

bool IsInstanceId(std::wstring_view text) {
    return std::count(text.begin(), text.end(), L'\\') >= 2;
}

HDEVINFO WINAPI HookSetupDiGetClassDevsW(const GUID* guid, PCWSTR enumerator, HWND, DWORD flags) {
    Call call("SetupDiGetClassDevsW", Counting::Always, {GuidName(guid), enumerator, Hex(flags)});
    if (call.Fails()) {
        return INVALID_HANDLE_VALUE;
    }
    auto set = std::make_shared<DeviceSet>();
    set->Global = MakeMember(nullptr);
    const bool allClasses = (flags & DIGCF_ALLCLASSES) != 0;
    const bool interfaces = (flags & DIGCF_DEVICEINTERFACE) != 0;
    const GUID* const wanted = allClasses ? nullptr : guid;
    if (guid == nullptr && !allClasses) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_INVALID_PARAMETER);
    }
    // Interfaces are asked for by a whole instance ID.
    if (enumerator != nullptr &&
        (interfaces ? !IsInstanceId(enumerator) : !EnumeratorExists(call.Inside(), enumerator))) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_INVALID_DATA);
    }
    if (interfaces) {
        CollectInterfaces(call.Inside(), wanted, enumerator, flags, *set);
    } else {
        CollectDevices(call.Inside(), wanted, enumerator, flags, *set);
    }
    return call.Succeed(call.Inside().Handles.Open(Kind::Set, nullptr, std::move(set)));
}

BOOL WINAPI HookSetupDiDestroyDeviceInfoList(HDEVINFO handle) {
    Call call("SetupDiDestroyDeviceInfoList", Counting::Never, {Named(handle)}, Telling::Aside);
    if (call.Fails()) {
        return TRUE;
    }
    if (SetOf(call, handle) == nullptr) {
        return FALSE;
    }
    call.Inside().Handles.Close(handle);
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiEnumDeviceInfo(HDEVINFO handle, DWORD index, PSP_DEVINFO_DATA data) {
    Call call("SetupDiEnumDeviceInfo", Counting::Always, {Named(handle), index});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    if (set == nullptr) {
        return FALSE;
    }
    if (data == nullptr || data->cbSize != sizeof(SP_DEVINFO_DATA)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    if (index >= set->Members.size()) {
        return call.Fail(FALSE, ERROR_NO_MORE_ITEMS);
    }
    FillDevInfo(*set, index, *data);
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiGetDeviceInstanceIdW(HDEVINFO handle, PSP_DEVINFO_DATA data, PWSTR buffer,
                                            DWORD size, PDWORD needed) {
    Call call("SetupDiGetDeviceInstanceIdW", Counting::Always, {DeviceName(handle, data), size});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    const SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
    }
    if (member->Owner->Description.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    const std::wstring& id = member->Owner->Description.InstanceId;
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(id.size() + 1);
    }
    if ((buffer == nullptr) != (size == 0)) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (size < id.size() + 1) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::copy_n(id.c_str(), id.size() + 1, buffer);
    return call.Succeed(TRUE);
}

} // namespace

DeviceSet* SetOf(Call& call, HDEVINFO handle) {
    const OpenHandle* open = call.Inside().Handles.Find(handle, Kind::Set);
    if (open == nullptr) {
        Misuse(call.Inside(), "device set " + call.Inside().Handles.Name(handle));
        return call.Fail<DeviceSet*>(nullptr, ERROR_INVALID_HANDLE);
    }
    return static_cast<DeviceSet*>(open->Object.get());
}

SetMember* MemberOf(Call& call, DeviceSet& set, const SP_DEVINFO_DATA* data) {
    if (data == nullptr || data->cbSize != sizeof(SP_DEVINFO_DATA) || data->Reserved == 0 ||
        data->Reserved > set.Members.size()) {
        return call.Fail<SetMember*>(nullptr, ERROR_INVALID_PARAMETER);
    }
    return &set.Members[data->Reserved - 1];
}

SetMember* MemberOrGlobal(Call& call, DeviceSet& set, const SP_DEVINFO_DATA* data) {
    return data == nullptr ? &set.Global : MemberOf(call, set, data);
}

SetTarget TargetOf(Call& call, HDEVINFO handle, const SP_DEVINFO_DATA* data) {
    SetTarget target;
    target.Set = call.Fails() ? nullptr : SetOf(call, handle);
    target.Member = target.Set == nullptr ? nullptr : MemberOrGlobal(call, *target.Set, data);
    return target;
}

void FillDevInfo(const DeviceSet& set, std::size_t member, SP_DEVINFO_DATA& data) {
    const Node& owner = *set.Members[member].Owner;
    data.ClassGuid = ClassGuidOf(owner.Description);
    data.DevInst = owner.DevInst;
    data.Reserved = member + 1;
}

GUID ClassGuidOf(const Device& device) {
    if (!device.Class) {
        return GUID{};
    }
    static const std::map<std::wstring, unsigned long> known = {
        {L"ports", 0x4D36E978}, {L"modem", 0x4D36E96D}, {L"net", 0x4D36E972},
        {L"cdrom", 0x4D36E965}, {L"media", 0x4D36E96C}, {L"system", 0x4D36E97D}};
    if (SameText(*device.Class, L"USB")) {
        return {0x36FC9E60, 0xC465, 0x11CF, {0x80, 0x56, 0x44, 0x45, 0x53, 0x54, 0x00, 0x00}};
    }
    const auto found = known.find(Lower(*device.Class));
    // All others share one.
    const unsigned long first = found != known.end() ? found->second : 0x4D36E900;
    return {first, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
}

Argument DeviceName(HDEVINFO handle, const SP_DEVINFO_DATA* data) {
    State* state = Inside();
    const OpenHandle* open = state == nullptr ? nullptr : state->Handles.Find(handle, Kind::Set);
    if (open == nullptr) {
        return Named(handle);
    }
    const auto& set = *static_cast<const DeviceSet*>(open->Object.get());
    if (data == nullptr || data->Reserved == 0 || data->Reserved > set.Members.size()) {
        return open->Name;
    }
    return open->Name + ", " + Utf8(set.Members[data->Reserved - 1].Owner->Description.InstanceId);
}

std::string GuidName(const GUID* guid) {
    if (guid == nullptr) {
        return "null";
    }
    if (*guid == UsbDeviceInterface) {
        return "UsbDevice";
    }
    return *guid == CdromInterface ? "Cdrom" : HexText(guid->Data1);
}

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupDiGetClassDevsW, HookSetupDiGetClassDevsW);
MACHINE_HOOK(SetupDiDestroyDeviceInfoList, HookSetupDiDestroyDeviceInfoList);
MACHINE_HOOK(SetupDiEnumDeviceInfo, HookSetupDiEnumDeviceInfo);
MACHINE_HOOK(SetupDiGetDeviceInstanceIdW, HookSetupDiGetDeviceInstanceIdW);
