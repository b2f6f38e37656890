// Reading of INF sections, line by line and field by field. All INF syntax (comments, quotes,
// continued lines, string keys) is the system parser's business; what it returns is kept as it is.
#pragma once

#include "common/text.h"

// One line of an INF section.
struct InfLine {
    // The line as the parser returns it.
    std::wstring Text;
    // Entry 0 is the line's key, or empty when it has none; the values follow. A value that the
    // parser refuses is left out, so that those behind it move down one place: only the key has a
    // place of its own.
    TextList Fields;
};

using InfLineList = std::vector<InfLine>;

// Clears `lines` and reads all lines of a section into it, in file order. A missing section gives
// no lines and true. False when the path is empty (`lines` is then left as it was), when the file
// is no readable INF (logs "GetInfSectionText: Get inf ..." or "GetInfSectionText: Open inf ...")
// or when one of its lines cannot be read (no log line); what was read until then stays in `lines`.
bool GetInfSectionText(const std::wstring& infPath, const std::wstring& sectionName,
                       InfLineList& lines);

// Appends to `lines` the section's lines whose key equals `key`, case ignored; all lines when `key`
// is empty. False when path or section name is empty, or when the section cannot be read; `lines`
// is then left as it was.
bool GetInfSectionTextByKey(const std::wstring& infPath, const std::wstring& sectionName,
                            const std::wstring& key, InfLineList& lines);
