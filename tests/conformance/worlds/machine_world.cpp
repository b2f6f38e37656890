#include "conformance/worlds/machine_world.h"

#include "machine/text.h"

#include <algorithm>

namespace conformance {

namespace {

// As Windows makes it: the instance ID with other separators, and the class.
std::wstring PathOf(const std::wstring& instanceId, const GUID& guid) {
    std::wstring path = machine::Lower(instanceId);
    std::replace(path.begin(), path.end(), L'\\', L'#');
    return L"\\\\?\\" + path + L"#" + machine::GuidText(guid);
}

} // namespace

MachineWorld::MachineWorld() {
    // Every Windows has some driver services.
    AddService(L"Known", L"A known service");
}

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
