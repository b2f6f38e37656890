#include "docs/scenarios.h"

#include "docs/page.h"
#include "machine/text.h"

#include "common/run_state.h"
#include "config/config_reader.h"
#include "install/mode_switch/shift_device.h"
#include "operations/file_operations.h"
#include "operations/registry_operations.h"
#include "setup/uninstall.h"
#include "ui/progress_window.h"
#include "ui/resource.h"

#include <algorithm>
#include <iterator>

namespace scenarios {

namespace {

using namespace machine;

constexpr const wchar_t* ModemKey = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Modem";

// `digits` hexadecimal digits.
std::string HexDigits(unsigned long value, std::size_t digits) {
    const std::string text = HexText(value).substr(2);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
}

// --- facts ---

void TellValue(const Machine& m, Lines& facts, const std::wstring& key, const std::wstring& name) {
    if (!m.RegistryValueExists(key, name)) {
        facts.push_back("no value: " + Utf8(key) + ", " + Utf8(name));
        return;
    }
    const DWORD type = m.RegistryType(key, name);
    std::string data;
    if (type == REG_SZ) {
        data = " " + Utf8(m.RegistryText(key, name));
    } else {
        for (const char byte : m.RegistryBytes(key, name)) {
            data += " " + HexDigits(static_cast<unsigned char>(byte), 2);
        }
    }
    facts.push_back("value: " + Utf8(key) + ", " + Utf8(name) + ", type " + std::to_string(type) +
                    ":" + data);
}

void TellCycles(Machine& m, Lines& facts, const std::string& name, const wchar_t* version,
                std::uint8_t mode) {
    m.SetWindowsVersion(version);
    SetupMode = mode;
    facts.push_back("read: " + name + (mode == 1 ? ", install: " : ", uninstall: ") +
                    std::to_string(ReadConfigInt(L"ENUM", L"MAXCYCLE")));
}

void TellOrders(const Machine& m, Lines& facts) {
    constexpr std::size_t CommandOffset = 36; // of a SCSI pass-through request
    for (const Order& order : m.Orders()) {
        std::string line = "order: 0x" + HexDigits(order.Code, 8);
        if (!order.Input.empty()) {
            line += ", command";
            for (std::size_t i = 0; i < 6; ++i) {
                line += " " + HexDigits(order.Input.at(CommandOffset + i), 2);
            }
        }
        facts.push_back(line);
    }
}

using Contents = std::map<std::wstring, std::string>;

Contents ContentsOf(const Machine& m) {
    Contents contents;
    for (const wchar_t* drive : {L"C:", L"D:"}) {
        for (const std::wstring& path : m.Files(drive)) {
            // The twins that Windows precompiles come and go with their INF files.
            if (path.ends_with(L".PNF")) {
                continue;
            }
            contents[path] = m.ReadBytes(path);
        }
    }
    return contents;
}

void TellFiles(const Contents& before, const Contents& after, Lines& lines) {
    for (const auto& [path, bytes] : after) {
        const auto old = before.find(path);
        if (old == before.end()) {
            lines.push_back("new: " + Utf8(path));
        } else if (old->second != bytes) {
            lines.push_back("changed: " + Utf8(path));
        }
    }
    for (const auto& entry : before) {
        if (!after.contains(entry.first)) {
            lines.push_back("gone: " + Utf8(entry.first));
        }
    }
}

// --- what is run ---

void RunSwitches(Machine& /*m*/, Lines& /*facts*/) {
    ShiftDevice();
    ShowProgressUI();
}

void ReadCycles(Machine& m, Lines& facts) {
    TellCycles(m, facts, "Windows 7", L"6.1.7601.17514", 1);
    TellCycles(m, facts, "Windows 10", L"10.0.19041.1", 1);
    TellCycles(m, facts, "Windows 7", L"6.1.7601.17514", 0);
    TellCycles(m, facts, "Windows Vista", L"6.0.6002.18005", 1);
    TellCycles(m, facts, "Windows Vista", L"6.0.6002.18005", 0);
}

void ReadUserSettings(Machine& /*m*/, Lines& facts) {
    facts.push_back("read: USERKEY: " + Utf8(ReadConfigString(L"USERSETTING", L"USERKEY", 1024)));
    for (const wchar_t* key : {L"MATCHMODE", L"LOADSERIAL"}) {
        facts.push_back("read: " + Utf8(key) + ": " +
                        std::to_string(ReadConfigInt(L"USERSETTING", key)));
    }
}

template <std::uint8_t Mode, bool (*RunSection)(const std::wstring&)>
void RunScript(const wchar_t* section) {
    SetupMode = Mode;
    RunSection(section);
}

void InstallFilesBefore(Machine& /*m*/, Lines& /*facts*/) {
    RunScript<1, RunFileOperSection>(L"PRE_FILE_OPER");
}
void InstallFilesAfter(Machine& /*m*/, Lines& /*facts*/) {
    RunScript<1, RunFileOperSection>(L"POST_FILE_OPER");
}
void UninstallFilesBefore(Machine& /*m*/, Lines& /*facts*/) {
    RunScript<0, RunFileOperSection>(L"PRE_FILE_OPER");
}
void UninstallFilesAfter(Machine& /*m*/, Lines& /*facts*/) {
    RunScript<0, RunFileOperSection>(L"POST_FILE_OPER");
}

void CreateFiles(Machine& m, Lines& facts) {
    RunScript<1, RunFileOperSection>(L"PRE_FILE_OPER");
    if (m.Exists(L"C:\\Windows\\Modem")) {
        facts.push_back("folder: C:\\Windows\\Modem");
    }
}

void SetNumber(Machine& m, Lines& facts) {
    RunScript<1, RunRegeditSection>(L"POST_REG_OPER");
    TellValue(m, facts, ModemKey, L"Speed");
}

void SetValues(Machine& m, Lines& facts) {
    MatchedDeviceBaseId = L"USB\\VID_3A9D&PID_9001";
    RunScript<1, RunRegeditSection>(L"POST_REG_OPER");
    TellValue(m, facts, L"HKEY_CURRENT_USER\\SOFTWARE\\Modem", L"Port");
    TellValue(m, facts, L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\Modem", L"Mode");
    TellValue(m, facts, ModemKey, L"Device");
}

void DeleteValues(Machine& m, Lines& facts) {
    RunScript<0, RunRegeditSection>(L"POST_REG_OPER");
    TellValue(m, facts, ModemKey, L"Port");
    if (!m.RegistryKeyExists(std::wstring(ModemKey) + L"\\History")) {
        facts.push_back("no key: " + Utf8(ModemKey) + "\\History");
    }
}

// An installation, and the uninstallation after it.
void MarkAndUnmark(Machine& m, Lines& facts) {
    const std::wstring key = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Example Modem";
    RunScript<1, RunRegeditSection>(L"POST_REG_OPER");
    TellValue(m, facts, key, L"Version");
    RunScript<0, RunRegeditSection>(L"POST_REG_OPER");
    TellValue(m, facts, key, L"Version");
}

void SetPort(Machine& m, Lines& facts) {
    RunScript<1, RunRegeditSection>(L"POST_REG_OPER");
    TellValue(m, facts, ModemKey, L"Port");
}

void SwitchDevice(Machine& m, Lines& facts) {
    InstallModeValue = 1;
    ShiftDevice();
    TellOrders(m, facts);
}

void ShowWindow(Machine& m, Lines& facts) {
    ShowProgressUI();
    m.LetThreadsFinish();
    facts.push_back("window: " + Utf8(m.WindowOf(m.LastDialog()).Text(PROGRESS_TEXT)));
}

void FindIdsToUninstall(Machine& /*m*/, Lines& facts) {
    SetupMode = 0;
    DeviceIdList ids;
    GetDevIDToUnInstall(ids);
    for (const std::wstring& id : ids) {
        facts.push_back("id: " + Utf8(id));
    }
}

void RunWith(std::wstring argument, Machine& m, Lines& facts) {
    facts.push_back("exit code: " + std::to_string(wWinMain(nullptr, nullptr, argument.data(), 0)));
    m.EndThreads();
}

void RunInstall(Machine& m, Lines& facts) {
    RunWith(L"-i", m, facts);
}

void RunUninstall(Machine& m, Lines& facts) {
    RunWith(L"-u", m, facts);
    TellValue(m, facts, ModemKey, L"Device");
}

// --- what was there before ---

void AddTempFiles(Machine& m) {
    for (const wchar_t* name : {L"first", L"second", L"uninstall"}) {
        m.WriteBytes(std::wstring(L"D:\\Packet\\") + name + L".tmp", "x");
    }
}

void AddNumberedFiles(Machine& m) {
    for (const wchar_t* name : {L"one", L"two", L"three", L"four"}) {
        m.WriteBytes(std::wstring(L"D:\\Packet\\") + name + L".tmp", "x");
    }
}

void AddDriverData(Machine& m) {
    m.WriteBytes(L"D:\\Packet\\modem.dat", "data");
    m.MakeFolder(L"C:\\Windows\\system32\\drivers");
}

void AddInstalledData(Machine& m) {
    m.WriteBytes(L"C:\\Windows\\system32\\drivers\\modem.dat", "data");
}

void AddLicence(Machine& m) {
    m.WriteBytes(L"D:\\Packet\\eula.txt", "text");
    m.MakeFolder(L"C:\\ProgramData\\Modem");
}

void AddModemKeys(Machine& m) {
    m.SetRegistryText(ModemKey, L"Port", L"COM3");
    m.MakeRegistryKey(std::wstring(ModemKey) + L"\\History");
}

void AddDrive(Machine& m) {
    m.AddDevice({.InstanceId = L"USBSTOR\\CdRom&Ven_Demo&Prod_Modem&Rev_0100\\1",
                 .HardwareIds = {L"USBSTOR\\CdRomDemo____Modem___________0100"},
                 .Class = L"CDROM",
                 .Interfaces = {{CdromInterface, L"\\\\?\\cdrom#1"}}});
}

void AddWholeDevice(Machine& m) {
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem", .Ids = {L"USB\\VID_3A9D&PID_9001"}});
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001\\1",
                 .Class = L"USB",
                 .Interfaces = {{UsbDeviceInterface, L"\\\\?\\usb#1"}}});
}

void AddFrench(Machine& m) {
    m.SetRegistryText(L"HKEY_CURRENT_USER\\SOFTWARE\\Modem", L"Language", L"FR");
    m.WriteLang(L"[FR]\r\nSTR_PREPARE=Un moment\r\n");
}

void AddKeptId(Machine& m) {
    m.SetRegistryText(ModemKey, L"Device", L"USB\\VID_3A9D&PID_9003");
    m.AddInf(L"WIN7\\modem.inf",
             Inf{.Ids = {L"USB\\VID_3A9D&PID_9001&MI_00", L"USB\\VID_3A9D&PID_9001&MI_01",
                         L"USB\\VID_3A9D&PID_9003"}});
}

void AddPacket(Machine& m) {
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem",
                                     .Ids = {L"USB\\VID_3A9D&PID_9001&MI_00"},
                                     .CopyFiles = {L"modem.sys"}});
    m.AddInf(L"WIN7\\port.inf",
             Inf{.Ids = {L"USB\\VID_3A9D&PID_9001&MI_01"}, .CopyFiles = {L"port.sys"}});
}

void AddPacketAndDevice(Machine& m) {
    AddPacket(m);
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001&MI_00\\6&1C2B&0&0000"});
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001&MI_01\\6&1C2B&0&0001"});
}

// What a direct installation of a packet with one INF leaves.
void AddInstalledDevice(Machine& m) {
    const Inf inf{
        .Class = L"Modem", .Ids = {L"USB\\VID_3A9D&PID_9001&MI_00"}, .CopyFiles = {L"modem.sys"}};
    m.AddInf(L"WIN7\\modem.inf", inf);
    m.WriteBytes(L"D:\\Packet\\WIN7\\modem.sys", "driver");
    m.AddOemInf(inf, L"oem7.inf");
    m.WriteBytes(L"C:\\Windows\\system32\\drivers\\modem.sys", "driver");
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001\\1", .Class = L"USB"});
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001&MI_00\\6&1C2B&0&0000", .Class = L"Modem"});
    m.SetRegistryText(ModemKey, L"Device", L"USB\\VID_3A9D&PID_9001");
}

} // namespace

const std::vector<Scenario>& All() {
    static const std::vector<Scenario> scenarios{
        {"low-byte", nullptr, RunSwitches},
        {"lookup-order", nullptr, ReadCycles},
        {"not-set", nullptr, ReadUserSettings},
        {"mixed-keys", AddTempFiles, UninstallFilesBefore},
        {"scsi-switch", AddDrive, SwitchDevice},
        {"vendor-switch", AddWholeDevice, SwitchDevice},
        {"user-language", AddFrench, ShowWindow},
        {"device-id", AddKeptId, FindIdsToUninstall},
        {"short-lines", AddNumberedFiles, InstallFilesBefore},
        {"long-path", nullptr, InstallFilesBefore},
        {"copy-driver", AddDriverData, InstallFilesAfter},
        {"own-variables", AddLicence, InstallFilesAfter},
        {"create", nullptr, CreateFiles},
        {"delete", AddInstalledData, UninstallFilesAfter},
        {"registry-number", nullptr, SetNumber},
        {"registry-set", nullptr, SetValues},
        {"registry-delete", AddModemKeys, DeleteValues},
        {"registry-short-lines", nullptr, SetPort},
        {"detection", nullptr, MarkAndUnmark},
        {"direct-install", AddPacketAndDevice, RunInstall},
        {"staging", AddPacket, RunInstall},
        {"staging-without-time-limit", AddPacket, RunInstall},
        {"uninstall", AddInstalledDevice, RunUninstall},
    };
    return scenarios;
}

Lines Tell(const Scenario& scenario, const std::string& ini) {
    Machine m;
    // What the pages say of devices has them in this order, and an uninstall gives up where the
    // size of a driver's details is not told by a refusal.
    m.Windows().Devices = Variants::Order::ById;
    m.Windows().UninstallDeletesFiles = false;
    m.Windows().DriverDetail = Variants::SizeQuery::TooSmall;
    m.WriteIni(Wide(ini));
    if (scenario.Prepare != nullptr) {
        scenario.Prepare(m);
    }
    const Contents before = ContentsOf(m);
    Lines facts;
    scenario.Run(m, facts);
    Lines told;
    for (const std::string& line : m.Log()) {
        // One text of the program has line breaks in it.
        const Lines parts = page::LinesOf("log: " + line);
        told.insert(told.end(), parts.begin(), parts.end());
    }
    TellFiles(before, ContentsOf(m), told);
    told.insert(told.end(), facts.begin(), facts.end());
    return told;
}

} // namespace scenarios
