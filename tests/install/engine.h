// What the tests of the install engine share.
#pragma once

#include "common/text.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

// Written whenever the packet's folder is looked for on the machine's Windows 7.
inline const std::string FolderLine = "GetDriverDir: Get system WIN7\tbit 64";

// Nothing was left open, and no handle was used wrongly.
inline void CheckTidy(const machine::Machine& m) {
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == machine::Lines{});
}

// The log without the lines about the packet's folder, which tell nothing new.
inline machine::Lines LogWithoutFolders(const machine::Machine& m) {
    machine::Lines lines = m.Log();
    std::erase(lines, FolderLine);
    return lines;
}

// "USB\VID_3A9D&PID_9001&MI_02\6&1C2B&0&0002".
inline std::wstring InterfaceInstance(const std::wstring& number) {
    return L"USB\\VID_3A9D&PID_9001&MI_" + number + L"\\6&1C2B&0&00" + number;
}
