// Copies of the packet's INF files in the system's INF store.
#pragma once

#include <string>

// Uninstalls and deletes every OEM*.INF of the store that lists one of the packet INF's hardware
// IDs, with its precompiled twin, and deletes the INF's own name in the store and that one's twin.
// No file is deleted when the store holds no OEM*.INF (true), or when it cannot be listed or one of
// them cannot be read (false; those before it are uninstalled by then). Files of the store that are
// no INF are passed over. Logs "CleanInf: ..." and "RemoveFile: ..." lines.
bool CleanInf(const std::wstring& infPath);
