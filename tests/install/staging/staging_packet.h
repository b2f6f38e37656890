// What the tests of the staging have in common.
#pragma once

#include "machine/machine.h"

#include "common/run_state.h"
#include "install/staging/pre_install.h"

namespace staging {

using namespace machine;

// The semaphores of a run, in the order in which handles to them are opened.
inline constexpr DWORD WatchdogThread = MainThread + 4;
inline constexpr DWORD WorkItemThread = MainThread + 8;

// D:\Packet\WIN7 with the INF files 1.inf, 2.inf ..., each for another device; `ini` is the whole
// Setup.ini. The program knows its main thread, as after its start.
inline void AddPacket(Machine& m, int infs, std::wstring_view ini) {
    MainThreadId = MainThread;
    m.WriteIni(ini);
    for (int number = 1; number <= infs; ++number) {
        const std::wstring digit = std::to_wstring(number);
        m.AddInf(L"WIN7\\" + digit + L".inf", Inf{.Ids = {L"USB\\VID_3A9D&PID_A00" + digit}});
    }
}

// A copy may take five seconds; nothing else is configured.
inline constexpr std::wstring_view FiveSeconds = L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\n";

// The lines of one copy.
inline Lines CopyLines(int number, int oemNumber) {
    const std::string inf = "D:\\Packet\\WIN7\\" + std::to_string(number) + ".inf";
    const std::string prefix = "PreInstallWorkItemThreadFun: ";
    return {prefix + "Copying inf " + inf + " to system inf floder...",
            prefix + "Copying inf to system inf floder : FORCE",
            prefix + "Inf " + inf + " was copied to inf C:\\Windows\\INF\\oem" +
                std::to_string(oemNumber) + ".inf"};
}

// Lines that begin with the prefix, in order.
inline Lines LinesOf(const Machine& m, std::string_view prefix) {
    Lines lines;
    for (const std::string& line : m.Log()) {
        if (line.rfind(prefix, 0) == 0) {
            lines.push_back(line);
        }
    }
    return lines;
}

inline bool FellBackToUpdate(const Machine& m) {
    return !m.CallsOf("GetProcAddress").empty() || !LinesOf(m, "AutoDeviceMatch: ").empty() ||
           !LinesOf(m, "UpdateInstall: ").empty();
}

} // namespace staging
