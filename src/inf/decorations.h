// Platform decorations of INF sections ("Models.NTamd64").
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// The decorations that the program knows, in the order in which sections are looked up.
inline constexpr std::array<std::wstring_view, 5> KnownDecorations{L"", L"NT", L"NTx86", L"NTIA64",
                                                                   L"NTAMD64"};

// True when a machine of `architecture` (the value of SYSTEM_INFO.wProcessorArchitecture) takes the
// decoration, case ignored. One that carries a Windows version ("NTamd64.6.1") is none of the known
// ones and never taken.
bool DecorationApplies(std::wstring_view decoration, std::uint16_t architecture);
