// What an INF installs: its device class, and the files that it copies. Only as much of the INF
// rules for copy lists is followed as a cleanup can rely on; the narrow look-up rules are intended.
#pragma once

#include "common/text.h"

#include <array>

// One file that an INF copies: destination folder (as the folder rules give it, possibly empty),
// then file name.
using DriverFileEntry = std::array<std::wstring, 2>;
using DriverFileList = std::vector<DriverFileEntry>;

// Sets `className` to the upper-cased class of section [Version], or to nothing when the INF names
// none. False when the INF cannot be read. Ends the process at a "Class" entry without a value.
bool GetInfClassName(const std::wstring& infPath, std::wstring& className);

// Puts the destination folder of a copy section into `folder`, by its entry in [DestinationDirs] or
// by "DefaultDestDir"; leaves `folder` as it was when there is neither. Folder 12 is the system's
// driver folder, 11 its SYSTEM32, 10 the Windows folder and a subfolder; another text is appended
// to `folder` as it stands. At most 259 characters. False when the INF cannot be read. Ends the
// process at an entry without a value, and at a 10 without a subfolder.
bool GetDestinationDir(const std::wstring& infPath, const std::wstring& copySection,
                       std::wstring& folder);

// Clears `entries` and fills it with the files that the INF's install sections copy. False when any
// of the sections in question is unreadable. Ends the process when a copy section has more lines
// than there are copy sections (see the definition), and at a line without a file name.
bool GetDriverFileList(const std::wstring& infPath, DriverFileList& entries);
