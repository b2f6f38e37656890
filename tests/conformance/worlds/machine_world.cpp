#include "conformance/worlds/machine_world.h"

#include "machine/text.h"

#include <algorithm>
#include <cwchar>

namespace conformance {

namespace {

std::wstring GuidText(const GUID& guid) {
    wchar_t text[40];
    std::swprintf(text, 40, L"{%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", guid.Data1,
                  guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                  guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text;
}

// As Windows makes it: the instance ID with other separators, and the class.
std::wstring PathOf(const std::wstring& instanceId, const GUID& guid) {
    std::wstring path = machine::Lower(instanceId);
    std::replace(path.begin(), path.end(), L'\\', L'#');
    return L"\\\\?\\" + path + L"#" + GuidText(guid);
}

} // namespace

void MachineWorld::AddDevice(const TestDevice& device) {
    machine::Device made{.InstanceId = device.Id,
                         .HardwareIds = device.HardwareIds,
                         .HasHardwareIds = !device.HardwareIds.empty(),
                         .CompatibleIds = device.CompatibleIds,
                         .Present = device.Present};
    if (!device.Class.empty()) {
        made.Class = device.Class;
    }
    if (!device.HasFlags) {
        made.ConfigFlags.reset();
    }
    for (const TestInterface& offered : device.Interfaces) {
        made.Interfaces.push_back({.ClassGuid = offered.Class,
                                   .Path = PathOf(device.Id, offered.Class),
                                   .Active = offered.Active});
    }
    machine_.AddDevice(std::move(made));
}

TestDevice MachineWorld::SomeDevice() {
    const TestDevice device{.Id = L"USB\\VID_3A9D&PID_90EE\\KNOWN",
                            .HardwareIds = {L"USB\\VID_3A9D&PID_90EE"},
                            .CompatibleIds = {L"USB\\Class_EE"},
                            .Class = L"Ports"};
    AddDevice(device);
    return device;
}

void MachineWorld::PutInf(const std::wstring& name, std::wstring_view text) {
    machine_.WriteText(L"C:\\Windows\\INF\\" + name, text);
}

void MachineWorld::AddService(const std::wstring& name, const std::wstring& displayName) {
    machine_.AddService({.Name = name, .DisplayName = displayName});
}

std::wstring MachineWorld::SomeService() {
    AddService(L"Known", L"A known service");
    return L"Known";
}

std::wstring MachineWorld::Folder() {
    machine_.MakeFolder(L"D:\\Statement");
    return L"D:\\Statement\\";
}

void MachineWorld::WriteBytes(const std::wstring& path, std::string_view bytes) {
    machine_.WriteBytes(path, bytes);
}

} // namespace conformance
