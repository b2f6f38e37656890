// Device information sets: making and walking them, properties, interfaces.
#include "machine/device_sets.h"

#include <algorithm>
#include <cstring>

namespace machine {

namespace {

constexpr std::size_t InstallParamsSize = 584;
static_assert(sizeof(SP_DEVINSTALL_PARAMS_W) == InstallParamsSize);
static_assert(sizeof(SP_DEVINFO_DATA) == 32);
static_assert(sizeof(SP_DEVICE_INTERFACE_DATA) == 32);
static_assert(sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W) == 8);

std::wstring EnumeratorOf(const Device& device) {
    return device.InstanceId.substr(0, device.InstanceId.find(L'\\'));
}

SetMember MakeMember(Node* owner) {
    SetMember member;
    member.Owner = owner;
    member.Install.cbSize = sizeof(member.Install);
    return member;
}

GUID ClassGuidOf(const Device& device) {
    struct Known {
        const wchar_t* Name;
        GUID Guid;
    };
    constexpr std::array<unsigned char, 8> Tail = {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18};
    GUID guid = {0x4D36E900, 0xE325, 0x11CE, {}};
    std::copy(Tail.begin(), Tail.end(), guid.Data4);
    static const std::map<std::wstring, unsigned long> known = {
        {L"ports", 0x4D36E978}, {L"modem", 0x4D36E96D}, {L"net", 0x4D36E972},
        {L"cdrom", 0x4D36E965}, {L"media", 0x4D36E96C}, {L"usb", 0x36FC9E60}};
    if (!device.Class) {
        return GUID{};
    }
    const auto found = known.find(Lower(*device.Class));
    guid.Data1 = found == known.end() ? guid.Data1 : found->second;
    return guid;
}

bool Belongs(const Node& node, const wchar_t* enumerator, DWORD flags) {
    const Device& device = node.Description;
    return !device.Removed && ((flags & DIGCF_PRESENT) == 0 || device.Present) &&
           (enumerator == nullptr || SameText(EnumeratorOf(device), enumerator));
}

// Members and interfaces of one interface class.
void CollectInterfaces(State& state, const GUID& guid, DWORD flags, DeviceSet& set) {
    for (Node& node : state.Nodes) {
        if (!Belongs(node, nullptr, flags)) {
            continue;
        }
        bool member = false;
        for (const Interface& offered : node.Description.Interfaces) {
            if (offered.ClassGuid == guid) {
                if (!member) {
                    set.Members.push_back(MakeMember(&node));
                    member = true;
                }
                set.Interfaces.push_back({set.Members.size() - 1, offered});
            }
        }
    }
}

void CollectDevices(State& state, const GUID* guid, const wchar_t* enumerator, DWORD flags,
                    DeviceSet& set) {
    for (Node& node : state.Nodes) {
        const bool ofClass = (flags & DIGCF_ALLCLASSES) != 0 || guid == nullptr ||
                             ClassGuidOf(node.Description) == *guid;
        if (ofClass && Belongs(node, enumerator, flags)) {
            set.Members.push_back(MakeMember(&node));
        }
    }
}

bool EnumeratorExists(const State& state, std::wstring_view name) {
    return SameText(name, L"USB") ||
           std::any_of(state.Nodes.begin(), state.Nodes.end(), [name](const Node& node) {
               return SameText(EnumeratorOf(node.Description), name);
           });
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

HDEVINFO WINAPI HookSetupDiGetClassDevsW(const GUID* guid, PCWSTR enumerator, HWND, DWORD flags) {
    Call call("SetupDiGetClassDevsW", Counting::Always, {GuidName(guid), enumerator, Hex(flags)});
    if (call.Fails()) {
        return INVALID_HANDLE_VALUE;
    }
    auto set = std::make_shared<DeviceSet>();
    set->Global = MakeMember(nullptr);
    if (guid == nullptr && (flags & DIGCF_ALLCLASSES) == 0) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_INVALID_PARAMETER);
    }
    if ((flags & DIGCF_DEVICEINTERFACE) != 0) {
        if (guid != nullptr) {
            CollectInterfaces(call.Inside(), *guid, flags, *set);
        }
    } else if (enumerator != nullptr && !EnumeratorExists(call.Inside(), enumerator)) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_INVALID_DATA);
    } else {
        CollectDevices(call.Inside(), guid, enumerator, flags, *set);
    }
    return call.Inside().Handles.Open(Kind::Set, nullptr, std::move(set));
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
    return TRUE;
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
    return TRUE;
}

BOOL WINAPI HookSetupDiGetDeviceInstanceIdW(HDEVINFO handle, PSP_DEVINFO_DATA data, PWSTR buffer,
                                            DWORD size, PDWORD needed) {
    Call call("SetupDiGetDeviceInstanceIdW", Counting::Always, {DeviceName(handle, data), size});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    const SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
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
    return TRUE;
}

std::string Bytes(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

std::string MultiText(const WideTexts& texts) {
    std::wstring all;
    for (const std::wstring& text : texts) {
        all += text + L'\0';
    }
    return Bytes(all + L'\0');
}

struct Property {
    DWORD Type;
    std::string Data;
};

std::optional<Property> PropertyOf(const Device& device, DWORD property) {
    if (property == SPDRP_HARDWAREID && device.HasHardwareIds) {
        return Property{REG_MULTI_SZ, MultiText(device.HardwareIds)};
    }
    if (property == SPDRP_COMPATIBLEIDS && !device.CompatibleIds.empty()) {
        return Property{REG_MULTI_SZ, MultiText(device.CompatibleIds)};
    }
    if (property == SPDRP_CLASS && device.Class) {
        return Property{REG_SZ, Bytes(*device.Class + L'\0')};
    }
    if (property == SPDRP_CONFIGFLAGS && device.ConfigFlags) {
        const DWORD flags = *device.ConfigFlags;
        return Property{REG_DWORD, {reinterpret_cast<const char*>(&flags), sizeof(flags)}};
    }
    return std::nullopt;
}

BOOL WINAPI HookSetupDiGetDeviceRegistryPropertyW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                                  DWORD property, PDWORD type, PBYTE buffer,
                                                  DWORD size, PDWORD needed) {
    Call call("SetupDiGetDeviceRegistryPropertyW", Counting::Always,
              {DeviceName(handle, data), property, size});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    const SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
    }
    if (member->Owner->Description.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    if (property >= SPDRP_MAXIMUM_PROPERTY) {
        return call.Fail(FALSE, ERROR_INVALID_REG_PROPERTY);
    }
    const std::optional<Property> value = PropertyOf(member->Owner->Description, property);
    if (!value) {
        return call.Fail(FALSE, ERROR_INVALID_DATA);
    }
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(value->Data.size());
    }
    if (type != nullptr) {
        *type = value->Type;
    }
    if (buffer == nullptr || size < value->Data.size()) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(buffer, value->Data.data(), value->Data.size());
    return TRUE;
}

BOOL WINAPI HookSetupDiSetDeviceRegistryPropertyW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                                  DWORD property, const BYTE* buffer, DWORD size) {
    DWORD flags = 0;
    if (buffer != nullptr && size >= sizeof(flags)) {
        std::memcpy(&flags, buffer, sizeof(flags));
    }
    Call call("SetupDiSetDeviceRegistryPropertyW", Counting::Always,
              {DeviceName(handle, data), property, Hex(flags), size});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    const SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
    }
    if (member->Owner->Description.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    if (property != SPDRP_CONFIGFLAGS) {
        return call.Fail(FALSE, ERROR_INVALID_REG_PROPERTY);
    }
    if (buffer == nullptr || size != sizeof(flags)) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    member->Owner->Description.ConfigFlags = flags;
    return TRUE;
}

BOOL WINAPI HookSetupDiEnumDeviceInterfaces(HDEVINFO handle, PSP_DEVINFO_DATA device,
                                            const GUID* guid, DWORD index,
                                            PSP_DEVICE_INTERFACE_DATA data) {
    Call call("SetupDiEnumDeviceInterfaces", Counting::Always,
              {Named(handle), GuidName(guid), index});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    if (set == nullptr) {
        return FALSE;
    }
    if (data == nullptr || data->cbSize != sizeof(SP_DEVICE_INTERFACE_DATA)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    DWORD position = 0;
    for (std::size_t place = 0; place < set->Interfaces.size(); ++place) {
        const SetInterface& offered = set->Interfaces[place];
        const bool ofDevice = device == nullptr || device->Reserved == offered.Member + 1;
        if (offered.What.ClassGuid == *guid && ofDevice && position++ == index) {
            data->InterfaceClassGuid = *guid;
            data->Flags = SPINT_ACTIVE;
            data->Reserved = place + 1;
            return TRUE;
        }
    }
    return call.Fail(FALSE, ERROR_NO_MORE_ITEMS);
}

BOOL WINAPI HookSetupDiGetDeviceInterfaceDetailW(HDEVINFO handle, PSP_DEVICE_INTERFACE_DATA data,
                                                 PSP_DEVICE_INTERFACE_DETAIL_DATA_W detail,
                                                 DWORD size, PDWORD needed,
                                                 PSP_DEVINFO_DATA device) {
    Call call("SetupDiGetDeviceInterfaceDetailW", Counting::Always,
              {Named(handle), Buffer(detail), size});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    if (set == nullptr) {
        return FALSE;
    }
    if (data == nullptr || data->cbSize != sizeof(SP_DEVICE_INTERFACE_DATA) ||
        data->Reserved == 0 || data->Reserved > set->Interfaces.size()) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    const bool sized = detail != nullptr && size >= sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);
    if ((detail == nullptr && size != 0) || (detail != nullptr && !sized) ||
        (sized && detail->cbSize != sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W))) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    if (device != nullptr && device->cbSize != sizeof(SP_DEVINFO_DATA)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    const SetInterface& found = set->Interfaces[data->Reserved - 1];
    const std::size_t total = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath) +
                              (found.What.Path.size() + 1) * sizeof(wchar_t);
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(total);
    }
    if (device != nullptr) {
        FillDevInfo(*set, found.Member, *device);
    }
    if (size < total) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(reinterpret_cast<unsigned char*>(detail) +
                    offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath),
                found.What.Path.c_str(), (found.What.Path.size() + 1) * sizeof(wchar_t));
    return TRUE;
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

void FillDevInfo(const DeviceSet& set, std::size_t member, SP_DEVINFO_DATA& data) {
    const Node& owner = *set.Members[member].Owner;
    data.ClassGuid = ClassGuidOf(owner.Description);
    data.DevInst = owner.DevInst;
    data.Reserved = member + 1;
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

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupDiGetClassDevsW, HookSetupDiGetClassDevsW);
MACHINE_HOOK(SetupDiDestroyDeviceInfoList, HookSetupDiDestroyDeviceInfoList);
MACHINE_HOOK(SetupDiEnumDeviceInfo, HookSetupDiEnumDeviceInfo);
MACHINE_HOOK(SetupDiGetDeviceInstanceIdW, HookSetupDiGetDeviceInstanceIdW);
MACHINE_HOOK(SetupDiGetDeviceRegistryPropertyW, HookSetupDiGetDeviceRegistryPropertyW);
MACHINE_HOOK(SetupDiSetDeviceRegistryPropertyW, HookSetupDiSetDeviceRegistryPropertyW);
MACHINE_HOOK(SetupDiEnumDeviceInterfaces, HookSetupDiEnumDeviceInterfaces);
MACHINE_HOOK(SetupDiGetDeviceInterfaceDetailW, HookSetupDiGetDeviceInterfaceDetailW);
