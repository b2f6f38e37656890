// The simulated machine as a world: a fresh one for each statement.
#pragma once

#include "conformance/world.h"
#include "machine/machine.h"

namespace conformance {

class MachineWorld : public World {
public:
    MachineWorld();
    void AddDevice(const TestDevice& device) override;
    TestDevice SomeDevice() override;
    void PutInf(const std::wstring& name, std::wstring_view text) override;
    void AddService(const std::wstring& name, const std::wstring& displayName) override;
    std::wstring SomeService() override;
    std::wstring Folder() override;
    void WriteBytes(const std::wstring& path, std::string_view bytes) override;
    std::wstring RegistryKey() override { return L"Software\\Statement"; }
    void ChangesTheSystem() override {}
    void NeedsAdministrator() override {}

private:
    machine::Machine machine_;
};

} // namespace conformance
