// What a check can arrange in the world that it asks. Whatever it arranges goes when the check is
// over.
#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>
#include <vector>

namespace conformance {

// Thrown by what a world cannot or must not do; the statement is then "not asked".
struct NotAsked {
    std::string Why;
};

struct TestInterface {
    GUID Class{};
    bool Active = true;
};

// A device node.
struct TestDevice {
    std::wstring Id{}; // instance ID
    std::vector<std::wstring> HardwareIds{};
    std::vector<std::wstring> CompatibleIds{};
    // "Ports", "USB", "Modem" or empty.
    std::wstring Class{};
    bool Present = true;
    // False: configuration flags were never written.
    bool HasFlags = true;
    std::vector<TestInterface> Interfaces{};
};

class World {
public:
    World() = default;
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    virtual ~World() = default;

    virtual void AddDevice(const TestDevice& device) = 0;
    // Any device that is there, for calls that change nothing lasting. A real Windows gives one of
    // its own.
    virtual TestDevice SomeDevice() = 0;
    // Writes an INF straight into the INF folder of Windows, without staging it.
    virtual void PutInf(const std::wstring& name, std::wstring_view text) = 0;
    virtual void AddService(const std::wstring& name, const std::wstring& displayName) = 0;
    // A service that is there, for calls that only read.
    virtual std::wstring SomeService() = 0;

    // An empty folder, with a final backslash, and files in it or below the folder of Windows.
    virtual std::wstring Folder() = 0;
    virtual void WriteBytes(const std::wstring& path, std::string_view bytes) = 0;
    // A sub-key of HKEY_CURRENT_USER that does not exist yet.
    virtual std::wstring RegistryKey() = 0;

    // Said before a call that changes the system for good, or that needs the rights of an
    // administrator.
    virtual void ChangesTheSystem() = 0;
    virtual void NeedsAdministrator() = 0;

    // UTF-16 with a byte order mark.
    void WriteText(const std::wstring& path, std::wstring_view text);
    // The same in the world's folder; the full path.
    std::wstring File(const std::wstring& name, std::wstring_view text);
};

} // namespace conformance
