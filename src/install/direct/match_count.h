// How many of a device's functions the packet leads one to expect.
#pragma once

#include "common/text.h"

// The ID of the whole device behind a function's ID: upper-cased, and cut at the last '&' when it
// contains "&MI_". At most 199 characters.
std::wstring BaseIdOf(std::wstring_view deviceId);

// How many entries of `packetIds` have the base ID of `deviceId`.
std::size_t ExpectedMatches(const TextList& packetIds, std::wstring_view deviceId);
