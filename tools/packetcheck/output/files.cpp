#include "output/files.h"

#include "output/utf8.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace output {

void WriteFile(const std::wstring& path, std::string_view bytes) {
    const auto close = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> file(_wfopen(path.c_str(), L"wb"), close);
    if (file == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        std::fflush(file.get()) != 0) {
        throw std::runtime_error(Utf8(path) + " cannot be written");
    }
}

} // namespace output
