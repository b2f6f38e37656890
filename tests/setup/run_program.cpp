#include "setup/run_program.h"

#include "system/hook.h"

namespace machine {

const std::wstring Parent = L"USB\\VID_3A9D&PID_9001\\5&1";
const std::wstring PortFunction = L"USB\\VID_3A9D&PID_9001&MI_00\\6&1&0000";
const std::wstring NetFunction = L"USB\\VID_3A9D&PID_9001&MI_01\\6&1&0001";

namespace {

constexpr auto* PortId = L"USB\\VID_3A9D&PID_9001&MI_00";
constexpr auto* NetId = L"USB\\VID_3A9D&PID_9001&MI_01";

Inf PortInf() {
    return {.Class = L"Ports", .Ids = {PortId}, .CopyFiles = {L"modem.sys"}};
}
Inf NetInf() {
    return {.Class = L"Net", .Ids = {NetId}, .CopyFiles = {L"modem.sys"}};
}

void WriteSettings(Machine& m, const std::wstring& ini) {
    // What is told of these runs has the devices in this order, and the driver file left to the
    // program. An uninstall gives up where the size of a driver's details is not told by a refusal.
    m.Windows().Devices = Variants::Order::ById;
    m.Windows().UninstallDeletesFiles = false;
    m.Windows().DriverDetail = Variants::SizeQuery::TooSmall;
    // Decorated: of two sections of the same name only the first is read, and that is the test's.
    m.WriteIni(ini + L"\r\n[INSTALL.WIN7]\r\nCOPYOEMTIMEOUT=60\r\nRETRYCOUNT=1\r\nINTERVAL=2\r\n"
                     L"[ENUM.WIN7]\r\nMAXCYCLE=2\r\nCYCLEINTERVAL=1\r\n");
    std::wstring lang = L"[EN]\r\n";
    for (const wchar_t* key :
         {L"STR_PREPARE", L"STR_INSTALL", L"STR_UNINSTALL", L"STR_INSTALL_SUCCESS",
          L"STR_INSTALL_FAIL", L"STR_UNINSTALL_SUCCESS", L"STR_UNINSTALL_FAIL"}) {
        lang += std::wstring(key) + L"=" + key + L"\r\n";
    }
    m.WriteLang(lang);
    m.AddInf(L"WIN7\\modem.inf", PortInf());
    m.AddInf(L"WIN7\\net.inf", NetInf());
    m.WriteText(L"D:\\Packet\\WIN7\\modem.sys", L"driver");
}

} // namespace

int RunProgram(const std::wstring& commandLine) {
    std::wstring line = commandLine;
    int exitCode = 0;
    {
        // The program's own instance ends with the process, when no machine lives any more.
        const CHookHelper helper;
        exitCode = wWinMain(nullptr, nullptr, line.data(), SW_SHOW);
    }
    return exitCode;
}

void SetUpModem(Machine& m, const std::wstring& ini) {
    WriteSettings(m, ini);
    m.AddDevice({.InstanceId = Parent, .Class = L"USB"});
    m.AddDevice({.InstanceId = PortFunction});
    m.AddDevice({.InstanceId = NetFunction});
}

void SetUpInstalledModem(Machine& m, const std::wstring& ini) {
    WriteSettings(m, ini);
    m.AddOemInf(PortInf(), L"oem3.inf");
    m.AddOemInf(NetInf(), L"oem4.inf");
    m.WriteText(L"C:\\Windows\\System32\\drivers\\modem.sys", L"driver");
    m.AddDevice({.InstanceId = Parent, .Class = L"USB"});
    m.AddDevice({.InstanceId = PortFunction, .Class = L"Ports"});
    m.AddDevice({.InstanceId = NetFunction, .Class = L"Net"});
}

Lines ShownTexts(const Machine& m) {
    Lines texts;
    for (const std::string& call : m.CallsOf("GetPrivateProfileStringW")) {
        const std::size_t key = call.find("STR_");
        if (key != std::string::npos) {
            texts.push_back(call.substr(key, call.find(',', key) - key));
        }
    }
    return texts;
}

bool EndsInPauseAfter(const Machine& m, const std::string& closingLine) {
    Lines story = m.Story();
    if (story.size() < 3) {
        return false;
    }
    story.erase(story.begin(), story.end() - 3);
    return story == Lines{"LOG " + closingLine, "Sleep(2000)", "CleanHook()"};
}

} // namespace machine
