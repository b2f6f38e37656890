// Names that are nearly right.
#pragma once

#include "common/text.h"

namespace rules {

// The name of the list that comes nearest to `name` (a letter or two wrong, missing or too many,
// case ignored); empty when none comes near.
std::wstring NearestName(std::wstring_view name, const TextList& names);

// " (did you mean X?)"; empty when nothing comes near.
std::wstring DidYouMean(std::wstring_view name, const TextList& names);

} // namespace rules
