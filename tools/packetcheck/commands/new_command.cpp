#include "commands/new_command.h"

#include "commands/arguments.h"
#include "commands/packet_folders.h"
#include "output/files.h"
#include "output/terminal.h"
#include "output/utf8.h"
#include "platform/platform.h"
#include "rules/packet.h"
#include "skeleton/packet_files.h"

#include <stdexcept>

namespace commands {

namespace {

std::vector<Generation> GenerationsNamed(const std::vector<std::string>& names) {
    std::vector<Generation> generations;
    for (const Generation& generation : AllGenerations()) {
        if (names.empty() && generation.Name != L"UNKNOWN") {
            generations.push_back(generation);
        }
    }
    for (const std::string& name : names) {
        const std::optional<Generation> generation = GenerationNamed(Wide(name));
        if (!generation) {
            throw std::runtime_error("there is no generation " + name);
        }
        generations.push_back(*generation);
    }
    return generations;
}

skeleton::Device DeviceOf(const NewOptions& options) {
    skeleton::Device device;
    skeleton::ReadId(options.Device, device);
    for (const std::string& function : options.Functions) {
        device.Functions.push_back(skeleton::ReadFunction(function));
    }
    if (!options.Storage.empty() || !options.ScsiCommand.empty()) {
        device.Before = skeleton::ReadStorage(options.Storage, options.ScsiCommand);
    }
    device.Generations = GenerationsNamed(options.Generations);
    return device;
}

void MakeFolder(const std::wstring& path) {
    if (CreateDirectoryW(path.c_str(), nullptr) == FALSE &&
        GetLastError() != ERROR_ALREADY_EXISTS) {
        throw std::runtime_error(Utf8(path) + " cannot be made");
    }
}

void Write(const std::wstring& folder, const skeleton::Files& files) {
    for (const auto& [name, bytes] : files) {
        const std::size_t cut = name.find(L'\\');
        if (cut != std::wstring::npos) {
            MakeFolder(folder + L"\\" + name.substr(0, cut));
        }
        output::WriteFile(folder + L"\\" + name, bytes);
    }
}

} // namespace

int RunNew(const NewOptions& options) {
    const skeleton::Device device = DeviceOf(options);
    std::wstring folder = FullFilePath(options.Folder);
    while (folder.ends_with(L'\\')) {
        folder.pop_back();
    }
    if (!rules::ListFolder(folder, false).empty()) {
        throw std::runtime_error(options.Folder + " is not empty");
    }
    MakeFolder(folder);
    const skeleton::Files files = skeleton::PacketFiles(device);
    Write(folder, files);
    output::WriteFile(folder + L".modem", skeleton::ModemDescription(device));
    terminal::Print("Written: " + std::to_string(files.size()) + " files in " + options.Folder +
                    ", and " + options.Folder +
                    ".modem, a device to try them with.\n"
                    "Replace the placeholders (*.sys, *.cat), complete the INF files, take out the "
                    "folders of\nWindows that you do not serve, then: PacketCheck check " +
                    options.Folder + "\n");
    return NothingFound;
}

} // namespace commands
