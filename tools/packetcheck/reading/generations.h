// The generations of Windows that the program tells apart.
#pragma once

#include "common/text.h"

#include <optional>

// One generation: how the tool and Setup.ini call it, and a kernel of it.
struct Generation {
    // "WIN10", "WIN7", "VISTA", "WINXP"; "UNKNOWN" for a Windows whose version is not recognised.
    std::wstring Name;
    std::wstring KernelVersion;

    // The packet's folder for it, without the backslash: "WIN10", "VISTA64", ...
    [[nodiscard]] std::wstring Folder() const;
};

// All of them, the newest first, the unknown one last.
const std::vector<Generation>& AllGenerations();

// By name, case ignored; nothing when there is none of that name.
std::optional<Generation> GenerationNamed(std::wstring_view name);
