// The system that the executable runs on as a world: Wine, where everything may be arranged, or a
// real Windows, where only a folder, a registry key of the user and reading calls are.
#pragma once

#include "conformance/world.h"

#include <map>

namespace conformance {

bool RunsOnWine();
// Wine's own version, 8 or 10, say; 0 on Windows.
int WineVersion();
bool IsAdministrator();

class SystemWorld : public World {
public:
    SystemWorld();
    ~SystemWorld() override;

    void AddDevice(const TestDevice& device) override;
    TestDevice SomeDevice() override;
    void PutInf(const std::wstring& name, std::wstring_view text) override;
    void AddService(const std::wstring& name, const std::wstring& displayName) override;
    std::wstring SomeService() override { return L"PlugPlay"; }
    std::wstring Folder() override;
    void WriteBytes(const std::wstring& path, std::string_view bytes) override;
    std::wstring RegistryKey() override;
    void ChangesTheSystem() override;
    void NeedsAdministrator() override;

private:
    std::wstring infFolder_;
    // What the INF folder held before, on a system that may be changed.
    std::vector<std::wstring> infsBefore_;
    std::wstring folder_;
    std::vector<std::wstring> deviceKeys_;
    std::vector<std::wstring> interfaceKeys_;
    std::vector<std::wstring> services_;
};

} // namespace conformance
