#include "conformance/world.h"

namespace conformance {

void World::WriteText(const std::wstring& path, std::wstring_view text) {
    std::string bytes = "\xFF\xFE";
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    WriteBytes(path, bytes);
}

std::wstring World::File(const std::wstring& name, std::wstring_view text) {
    std::wstring path = Folder() + name;
    WriteText(path, text);
    return path;
}

} // namespace conformance
