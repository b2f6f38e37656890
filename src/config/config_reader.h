// ConfigReader: the only way to Setup.ini, which lies beside the executable. Every key is looked up
// in six sections, from the one made for this run mode, Windows generation and architecture to the
// plain one, so that one file serves every machine. Nothing is cached: a rollback, which runs in
// the other mode, must see its own sections.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The value of `key` in the first section that has a non-empty one; empty when none has. Cut to
// `capacity` - 1 characters.
std::wstring ReadConfigString(const std::wstring& section, const std::wstring& key,
                              std::size_t capacity);

// The number of `key` in the first section that has one other than -1; 0 when none has.
std::int32_t ReadConfigInt(const std::wstring& section, const std::wstring& key);

// True when the low byte of the number is not zero. Some switches are defined on that byte alone:
// 256 means off.
bool ReadConfigSwitch(const std::wstring& section, const std::wstring& key);

// A number of seconds as 32-bit milliseconds. The product wraps around: no bound is applied.
std::uint32_t Milliseconds(std::int32_t seconds);
