// Files that come with Windows.
#pragma once

#include <string_view>

namespace rules {

// True for the name of a driver, or of another file of the system folder, that Windows brings
// along. Of thousands, those are known that modems and their packets come near to.
bool ComesWithWindows(std::wstring_view fileName);

} // namespace rules
