// Scripted registry operations, and the single queries by which other rooms read a configured
// value.
#pragma once

#include <array>
#include <string>

// The data of a request: 2,048 bytes.
using RegistryData = std::array<wchar_t, 1024>;

// The text in `data`, up to its terminating zero or its end.
std::wstring TextOfRegistryData(const RegistryData& data);

// Runs the request lines of a section. False when the section name is empty or when a line returned
// false; the lines after it are then not run.
bool RunRegeditSection(const std::wstring& section);

// Carries out one line `opcode,root,key path,value name,data,type,P1,...`: 1 creates the key and
// sets the value, 2 deletes the value (or, when the key path ends in a backslash, the subkey of
// that name), 3 queries the value into `data`; any other opcode does nothing. `data` may be null: a
// query then only looks whether the value is there. It changes only when a query succeeds. With
// opcode 1, a `data` that is given and not empty is written in place of the line's own data, all
// 2,048 bytes of it. False only for an empty line. A request that fails is logged as
// "ExecuteSingleRegeditReq: Register operation fail, ..." and is true all the same. So is one with
// too few fields, or with fields that do not fit into 259 characters; neither is carried out.
bool ExecuteSingleRegeditReq(const std::wstring& line, RegistryData* data);
