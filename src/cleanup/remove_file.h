// Deletion of files, one way for cleanup and uninstall.
#pragma once

#include "common/text.h"

// Deletes a file, whatever its attributes. Logs what came of it in one of three "RemoveFile: ..."
// lines: it did not exist, was deleted, or could not be.
void DeleteFileWithLog(const std::wstring& path);

// The path with everything after its last '.' replaced by "PNF": the precompiled twin of an INF
// file. At most 259 characters.
std::wstring PrecompiledTwin(const std::wstring& infPath);

// Deletes the driver files that a packet INF copies. False when its file list cannot be built;
// single files that cannot be deleted are only logged.
bool RemoveFile(const std::wstring& infPath);
