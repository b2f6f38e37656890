// The fields of a comma-separated line.
#pragma once

#include "common/text.h"

// Appends the comma-separated pieces of `text` to `fields` and returns how many entries `fields`
// has then. A piece may be empty, but nothing is added for a comma at the very end. Empty text
// appends nothing and returns 0.
std::size_t SplitByComma(std::wstring_view text, TextList& fields);
