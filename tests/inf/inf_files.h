// INF files for the tests of this folder.
#pragma once

#include "machine/machine.h"

#include <string>

inline const std::wstring InfHead = L"[Version]\r\nSignature=\"$Windows NT$\"\r\n";
inline const std::wstring InfPath = L"D:\\Packet\\WIN7\\a.inf";

// An INF of the packet with these sections behind its head; returns its path.
inline std::wstring AddSections(machine::Machine& m, const std::wstring& sections,
                                const std::wstring& name = L"a.inf") {
    return m.AddInf(L"WIN7\\" + name, InfHead + sections);
}

// The sections that the program looked for so far, in order.
inline machine::Lines SectionsSought(const machine::Machine& m) {
    machine::Lines names;
    for (const std::string& call : m.CallsOf("SetupFindFirstLineW")) {
        const std::size_t start = call.find(", ") + 2;
        names.push_back(call.substr(start, call.rfind(", ") - start));
    }
    return names;
}

// The number of the last call so far whose journal line is this one, counted among the calls of its
// function.
inline int LastCall(const machine::Machine& m, const std::string& function,
                    const std::string& line) {
    const machine::Lines calls = m.CallsOf(function);
    int number = static_cast<int>(calls.size());
    while (number > 0 && calls[static_cast<std::size_t>(number) - 1] != line) {
        --number;
    }
    return number;
}
