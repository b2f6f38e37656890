// Files that the tool writes.
#pragma once

#include <string>
#include <string_view>

namespace output {

// Writes the bytes, over what is there. Throws when that fails.
void WriteFile(const std::wstring& path, std::string_view bytes);

} // namespace output
