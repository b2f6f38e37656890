// What an INF's models sections say: which hardware IDs it serves, and by which install sections.
#pragma once

#include "inf/section_reader.h"

// The hardware and compatible IDs that an INF lists, each once and as it is first spelt.
using DeviceIdList = TextList;

// True when the machine at hand takes sections with this decoration (see DecorationApplies).
bool MatchPlatformDecoration(std::wstring_view decoration);

// Clears `lines` and fills it with the lines of all models sections that apply: per manufacturer
// the undecorated section, then the decorated ones in the order in which they are named. In such a
// line entry 1 is the install section, entry 2 the hardware ID, the rest compatible IDs. False when
// the path is empty (`lines` is then left as it was) or when a section cannot be read.
bool GetInfModelsText(const std::wstring& infPath, InfLineList& lines);

// Clears `sections` and fills it with the distinct install sections of the models lines. False as
// above. Ends the process at a models line without an install section.
bool GetInstallSectionsFromInf(const std::wstring& infPath, TextList& sections);

// Clears `ids` and fills it with the hardware and compatible IDs that the INF lists. False as
// above.
bool GetDeviceIDFromInf(const std::wstring& infPath, DeviceIdList& ids);
