#include "conformance/worlds/system_world.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cwchar>
#include <stdexcept>

namespace conformance {

namespace {

const std::wstring OwnKey = L"Software\\SetupStatements";
const std::wstring EnumKey = L"System\\CurrentControlSet\\Enum\\";
const std::wstring InterfaceKey = L"System\\CurrentControlSet\\Control\\DeviceClasses\\";

std::vector<std::wstring> NamesIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW data{};
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &data);
    for (BOOL found = search != INVALID_HANDLE_VALUE; found != FALSE;
         found = FindNextFileW(search, &data)) {
        const std::wstring name = data.cFileName;
        if (name != L"." && name != L"..") {
            names.push_back(name);
        }
    }
    FindClose(search);
    return names;
}

void RemoveFolder(const std::wstring& folder) {
    for (const std::wstring& name : NamesIn(folder)) {
        const std::wstring path = folder + name;
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (DeleteFileW(path.c_str()) == FALSE) {
            RemoveFolder(path + L"\\");
        }
    }
    RemoveDirectoryW(folder.c_str());
}

void RemoveKey(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) {
        return;
    }
    std::array<wchar_t, 256> name{};
    while (RegEnumKeyW(key, 0, name.data(), 256) == ERROR_SUCCESS) {
        RemoveKey(key, name.data());
    }
    RegCloseKey(key);
    RegDeleteKeyW(root, path.c_str());
}

// A key of the machine, for writing.
class MachineKey {
public:
    explicit MachineKey(const std::wstring& path, DWORD options = REG_OPTION_NON_VOLATILE) {
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, options, KEY_ALL_ACCESS,
                        nullptr, &key_, nullptr);
    }
    ~MachineKey() { RegCloseKey(key_); }
    MachineKey(const MachineKey&) = delete;
    MachineKey& operator=(const MachineKey&) = delete;

    void PutText(const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ) const {
        RegSetValueExW(key_, name, 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }
    void PutList(const wchar_t* name, const std::vector<std::wstring>& texts) const {
        std::wstring all;
        for (const std::wstring& text : texts) {
            all += text + L'\0';
        }
        if (!texts.empty()) {
            PutText(name, all, REG_MULTI_SZ);
        }
    }
    void PutNumber(const wchar_t* name, DWORD number) const {
        RegSetValueExW(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                       sizeof(number));
    }

private:
    HKEY key_ = nullptr;
};

std::wstring GuidText(const GUID& guid) {
    std::array<wchar_t, 40> text{};
    wsprintfW(text.data(), L"{%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", guid.Data1,
              guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3],
              guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text.data();
}

std::wstring ClassGuidText(const std::wstring& name) {
    if (name == L"Ports") {
        return L"{4d36e978-e325-11ce-bfc1-08002be10318}";
    }
    return name == L"USB" ? L"{36fc9e60-c465-11cf-8056-444553540000}"
                          : L"{00000000-0000-0000-0000-000000000000}";
}

// What a bus driver leaves in the registry when it shows a device. A key below it tells that the
// device is there, and goes with the session as on a machine that is turned off.
void WriteDevice(const TestDevice& device) {
    const MachineKey key(EnumKey + device.Id);
    key.PutText(L"ClassGUID", ClassGuidText(device.Class));
    if (!device.Class.empty()) {
        key.PutText(L"Class", device.Class);
    }
    if (device.HasFlags) {
        key.PutNumber(L"ConfigFlags", 0);
    }
    key.PutList(L"HardwareID", device.HardwareIds);
    key.PutList(L"CompatibleIDs", device.CompatibleIds);
    if (device.Present) {
        const MachineKey control(EnumKey + device.Id + L"\\Control", REG_OPTION_VOLATILE);
    }
}

// Registers the interface with the system's own function; its key.
std::wstring WriteInterface(const std::wstring& id, const TestInterface& offered) {
    const HDEVINFO set = SetupDiCreateDeviceInfoList(nullptr, nullptr);
    SP_DEVINFO_DATA data{};
    data.cbSize = sizeof(data);
    SetupDiOpenDeviceInfoW(set, id.c_str(), nullptr, 0, &data);
    SetupDiCreateDeviceInterfaceW(set, &data, &offered.Class, nullptr, 0, nullptr);
    SetupDiDestroyDeviceInfoList(set);
    std::wstring name = id;
    std::replace(name.begin(), name.end(), L'\\', L'#');
    const std::wstring ofClass = InterfaceKey + GuidText(offered.Class);
    if (offered.Active) {
        const std::wstring link =
            ofClass + L"\\##?#" + name + L"#" + GuidText(offered.Class) + L"\\#\\Control";
        MachineKey(link, REG_OPTION_VOLATILE).PutNumber(L"Linked", 1);
    }
    return ofClass;
}

std::wstring TextProperty(HDEVINFO set, SP_DEVINFO_DATA& data, DWORD property) {
    std::array<wchar_t, 1024> text{};
    SetupDiGetDeviceRegistryPropertyW(set, &data, property, nullptr,
                                      reinterpret_cast<BYTE*>(text.data()), 2000, nullptr);
    return text.data();
}

// The first device of a real Windows that is there and has an ID.
TestDevice FirstDevice() {
    TestDevice first;
    const HDEVINFO set =
        SetupDiGetClassDevsW(nullptr, L"USB", nullptr, DIGCF_ALLCLASSES | DIGCF_PRESENT);
    SP_DEVINFO_DATA data{};
    data.cbSize = sizeof(data);
    for (DWORD index = 0; SetupDiEnumDeviceInfo(set, index, &data) != FALSE; ++index) {
        std::array<wchar_t, 300> id{};
        const std::wstring hardwareId = TextProperty(set, data, SPDRP_HARDWAREID);
        if (!hardwareId.empty() &&
            SetupDiGetDeviceInstanceIdW(set, &data, id.data(), 300, nullptr) != FALSE) {
            first = {.Id = id.data(), .HardwareIds = {hardwareId}};
            break;
        }
    }
    SetupDiDestroyDeviceInfoList(set);
    return first;
}

} // namespace

int WineVersion() {
    using VersionFunction = const char*(CDECL*)();
    const auto version =
        GetFunction<VersionFunction>(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    return version == nullptr ? 0 : std::atoi(version());
}

bool RunsOnWine() {
    return WineVersion() != 0;
}

bool IsAdministrator() {
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    if (manager != nullptr) {
        CloseServiceHandle(manager);
    }
    return manager != nullptr;
}

SystemWorld::SystemWorld() {
    std::array<wchar_t, MAX_PATH> path{};
    GetWindowsDirectoryW(path.data(), MAX_PATH);
    infFolder_ = std::wstring(path.data()) + L"\\inf\\";
    GetTempPathW(MAX_PATH, path.data());
    folder_ = std::wstring(path.data()) + L"setup-statements\\asked\\";
    if (RunsOnWine()) {
        infsBefore_ = NamesIn(infFolder_);
    }
}

SystemWorld::~SystemWorld() {
    for (const std::wstring& name : services_) {
        const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
        const SC_HANDLE service = OpenServiceW(manager, name.c_str(), DELETE);
        DeleteService(service);
        CloseServiceHandle(service);
        CloseServiceHandle(manager);
    }
    for (const std::wstring& key : interfaceKeys_) {
        RemoveKey(HKEY_LOCAL_MACHINE, key);
    }
    for (const std::wstring& key : deviceKeys_) {
        RemoveKey(HKEY_LOCAL_MACHINE, key);
    }
    if (RunsOnWine()) {
        for (const std::wstring& name : NamesIn(infFolder_)) {
            if (std::find(infsBefore_.begin(), infsBefore_.end(), name) == infsBefore_.end()) {
                DeleteFileW((infFolder_ + name).c_str());
            }
        }
    }
    RemoveFolder(folder_);
    RemoveKey(HKEY_CURRENT_USER, OwnKey);
}

void SystemWorld::AddDevice(const TestDevice& device) {
    if (!RunsOnWine()) {
        throw NotAsked{"needs a device of its own, which is not made on a real Windows"};
    }
    // The device's key; that of the device's model goes with it.
    deviceKeys_.push_back(EnumKey + device.Id.substr(0, device.Id.rfind(L'\\')));
    WriteDevice(device);
    for (const TestInterface& offered : device.Interfaces) {
        interfaceKeys_.push_back(WriteInterface(device.Id, offered));
    }
}

TestDevice SystemWorld::SomeDevice() {
    if (!RunsOnWine()) {
        const TestDevice first = FirstDevice();
        if (first.Id.empty()) {
            throw NotAsked{"needs a USB device of any kind, and none is plugged"};
        }
        return first;
    }
    const TestDevice device{.Id = L"USB\\VID_3A9D&PID_90EE\\KNOWN",
                            .HardwareIds = {L"USB\\VID_3A9D&PID_90EE"},
                            .CompatibleIds = {L"USB\\Class_EE"},
                            .Class = L"Ports"};
    AddDevice(device);
    return device;
}

void SystemWorld::PutInf(const std::wstring& name, std::wstring_view text) {
    ChangesTheSystem();
    WriteText(infFolder_ + name, text);
}

void SystemWorld::AddService(const std::wstring& name, const std::wstring& displayName) {
    ChangesTheSystem();
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    const SC_HANDLE service =
        CreateServiceW(manager, name.c_str(), displayName.c_str(), SERVICE_ALL_ACCESS,
                       SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE,
                       L"C:\\statement.sys", nullptr, nullptr, nullptr, nullptr, nullptr);
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
    services_.push_back(name);
}

std::wstring SystemWorld::Folder() {
    std::array<wchar_t, MAX_PATH> temp{};
    GetTempPathW(MAX_PATH, temp.data());
    CreateDirectoryW((std::wstring(temp.data()) + L"setup-statements").c_str(), nullptr);
    CreateDirectoryW(folder_.c_str(), nullptr);
    return folder_;
}

void SystemWorld::WriteBytes(const std::wstring& path, std::string_view bytes) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("a file could not be written");
    }
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

std::wstring SystemWorld::RegistryKey() {
    return OwnKey + L"\\asked";
}

void SystemWorld::ChangesTheSystem() {
    if (!RunsOnWine()) {
        throw NotAsked{"would change the system"};
    }
}

void SystemWorld::NeedsAdministrator() {
    if (!IsAdministrator()) {
        throw NotAsked{"needs the rights of an administrator"};
    }
}

} // namespace conformance
