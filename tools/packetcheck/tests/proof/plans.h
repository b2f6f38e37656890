// The plans that the shipped PacketCheck.exe makes of packets.
#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace proof {

using Json = nlohmann::json;

// A folder for packets; removed with its owner.
class PacketFolder {
public:
    PacketFolder();
    ~PacketFolder();
    PacketFolder(const PacketFolder&) = delete;
    PacketFolder& operator=(const PacketFolder&) = delete;

    // Makes a new one of these files: names with backslashes, bytes.
    void Keep(const std::map<std::wstring, std::string>& files);

    // The plans of all folders kept so far, in that order, as if each were D:\Packet on Windows 10.
    // `direction` is "-i" or "-u".
    [[nodiscard]] std::vector<Json> Plans(const std::wstring& direction) const;

private:
    std::wstring path_;
    int kept_ = 0;
};

} // namespace proof
