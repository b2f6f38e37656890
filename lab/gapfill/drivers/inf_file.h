// Reading INF files with the system's parser, which is real in Wine.
#pragma once

#include "system.h"

class InfFile {
public:
    explicit InfFile(const std::wstring& path);
    ~InfFile();
    InfFile(const InfFile&) = delete;
    InfFile& operator=(const InfFile&) = delete;

    // False for a file that is missing or no INF; the last error tells why.
    [[nodiscard]] bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

    // The lines of a section, each as key (empty when it has none) and values. A missing section
    // has no lines.
    [[nodiscard]] std::vector<std::vector<std::wstring>> Lines(const std::wstring& section) const;

    // The first value of a key, empty when it is missing.
    [[nodiscard]] std::wstring Value(const std::wstring& section, const std::wstring& key) const;

private:
    HINF handle_;
};

// One line of a models section that this machine (x64) uses.
struct Model {
    std::wstring Manufacturer;
    std::wstring Description;
    std::wstring InstallSection;
    std::wstring HardwareId;
};

std::vector<Model> ModelsOf(const InfFile& inf);

// The names of the files that the INF's media hold (its section SourceDisksFiles).
std::vector<std::wstring> SourceFilesOf(const InfFile& inf);
