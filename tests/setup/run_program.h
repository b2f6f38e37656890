// Whole runs of the program on the simulated machine, from its entry to the end of its process.
#pragma once

#include "machine/machine.h"

#include <string>

// The program's own entry.
int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int showCommand);

namespace machine {

// Runs the program with this command line (without the program's name) until its process has ended.
// Returns the exit code.
int RunProgram(const std::wstring& commandLine);

// The instance IDs of the plain modem: the composite device and its two functions.
extern const std::wstring Parent;
extern const std::wstring PortFunction;
extern const std::wstring NetFunction;

// A packet for Windows 7 of a port and a network function (modem.inf, net.inf, modem.sys), its
// modem attached and not installed yet, and a Lang.ini whose texts are their keys. `ini` is put
// into Setup.ini before settings that make every install mode end well.
void SetUpModem(Machine& m, const std::wstring& ini);

// The modem as an earlier install leaves it: both INF files in the store, driver and devices.
void SetUpInstalledModem(Machine& m, const std::wstring& ini);

// The texts that the window would have shown, in order: every STR_ key that was looked up.
Lines ShownTexts(const Machine& m);

// The end of the log: every way out has these lines, and the pause after them.
bool EndsInPauseAfter(const Machine& m, const std::string& closingLine);

} // namespace machine
