// The one template engine of the scripted operations: a line's "%" placeholders are filled from the
// parameters at its end.
#pragma once

#include "common/text.h"

// An operation line with its placeholders filled.
struct FilledLine {
    // The filled line as it is logged, cut to 259 characters.
    std::wstring Text;
    TextList Fields;
    // True when something of the filled line was cut away.
    bool WasCut = false;
    // How many fields, from the first on, came through whole.
    std::size_t WholeFields = 0;

    // The field at `index`, empty when there is none.
    [[nodiscard]] std::wstring Field(std::size_t index) const;
};

// Fills the line: each parameter in order takes the place of the next two-character placeholder
// ("%" and whatever follows it). Placeholders beyond the parameters stay, parameters beyond the
// placeholders are dropped. Without any parameter the filled line is empty.
FilledLine FillTemplate(std::wstring_view line, const TextList& parameters);
