// A folder of the temporary one, removed with its owner.
#pragma once

#include <map>
#include <string>

class ScratchFolder {
public:
    // `name` tells the folders of one test apart.
    explicit ScratchFolder(const std::wstring& name);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::wstring& Path() const { return path_; }

    // Makes the folder hold exactly these files (paths with backslashes, as bytes). Files that are
    // the same as before are left alone.
    void Fill(const std::map<std::string, std::string>& files);

private:
    std::wstring path_;
    std::map<std::string, std::string> files_;
};

// All files below a folder, by their path relative to it.
std::map<std::string, std::string> FilesBelow(const std::wstring& folder);

// Where a file of the tests' own data lies: "packets\\good".
std::wstring DataPath(const std::wstring& name);
