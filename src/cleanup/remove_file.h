// Deletion of files, one way for cleanup and uninstall.
#pragma once

#include "common/text.h"

// Deletes a file, whatever its attributes. Logs what came of it in one of three "RemoveFile: ..."
// lines: it did not exist, was deleted, or could not be. A path without a drive or server counts as
// one that does not exist: the current directory is never used.
void DeleteFileWithLog(const std::wstring& path);

// The path with everything after the last '.' of its file name replaced by "PNF" (".PNF" added when
// there is none): the precompiled twin of an INF file.
std::wstring PrecompiledTwin(const std::wstring& infPath);

// Deletes the driver files that a packet INF copies. False when its file list cannot be built;
// single files that cannot be deleted are only logged.
bool RemoveFile(const std::wstring& infPath);
