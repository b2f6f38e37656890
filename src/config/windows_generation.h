// Which Windows this is. The answer comes from the kernel file's product version: the version
// functions of the system answer as the compatibility mode of the moment wants it.
#pragma once

#include <cstdint>
#include <string>

// The version code of the running Windows (see VersionCodeOf); 0 when the version cannot be read.
std::uint32_t GetOsVersionCode();

// "WINXP", "VISTA", "WIN7", "WIN10", or empty when the version is not recognised.
std::wstring GetOsName();
