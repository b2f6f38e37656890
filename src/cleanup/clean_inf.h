// Copies of the packet's INF files in the system's INF store.
#pragma once

#include <string>

// Uninstalls and deletes every OEM*.INF of the store that lists one of the packet INF's hardware
// IDs, with its precompiled twin, and the INF's own name in the store likewise. Nothing at all is
// deleted when the store holds no OEM*.INF, or when one of them cannot be read: then false. Logs
// "CleanInf: ..." and "RemoveFile: ..." lines.
bool CleanInf(const std::wstring& infPath);
