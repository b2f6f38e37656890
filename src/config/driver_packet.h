// The driver packet: the folder of INF files and their drivers that lies beside the executable, one
// per Windows generation.
#pragma once

#include "common/text.h"

// Full paths of the packet's INF files, in the order in which the file system lists them.
using InfSet = TextList;

// Full path of the packet's folder, ending in a backslash, at most 259 characters; empty when the
// executable's own path is not known. Logs "GetDriverDir: Get system ...".
std::wstring GetDriverDir();

// Clears `files` and fills it with the full paths of the entries of `folder` (which ends in a
// backslash) that match `pattern`, in the file system's order. Folders that match are listed too.
// False when folder or pattern is empty (`files` is then left as it was) or when the folder cannot
// be read; no match at all is an empty list and true. Writes no log line: callers tell what they
// needed the files for.
bool FindDriverPacketFiles(const std::wstring& folder, const std::wstring& pattern,
                           TextList& files);

// Clears `infs` and fills it with the packet's INF files. False when they cannot be listed or when
// there is none: `failureLine`, a format for the packet's folder and the last error, is then
// logged.
bool ListPacketInfs(InfSet& infs, const wchar_t* failureLine);
