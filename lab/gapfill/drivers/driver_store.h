// The system's store of INF files, C:\windows\inf, with the names that Windows gives.
#pragma once

#include "system.h"

// Puts an INF into the store as oem<N>.inf, with the files that it copies, and returns its full
// path there. An INF of the same content that is there already is used. Empty when it fails, with
// the reason in the last error: ERROR_FILE_NOT_FOUND when the INF or one of its files is missing. A
// file that lies in the store's own folder is returned as it is.
std::wstring StoreInf(const std::wstring& source);
