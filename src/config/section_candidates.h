// The Setup.ini sections in which a key is looked up.
#pragma once

#include "common/text.h"

// The six section names for base section `section`, from the most specific to the plain one:
// S.mode.os.architecture, S.mode.os, S.mode, S.os.architecture, S.os, S. An empty `os` is put in as
// it is ("S.mode."), so that a script can still name those sections. Each name is cut to 259
// characters.
TextList SectionCandidates(std::wstring_view section, std::wstring_view mode, std::wstring_view os,
                           std::wstring_view architecture);
