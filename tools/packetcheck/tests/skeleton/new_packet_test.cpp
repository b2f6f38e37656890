// Packets that the tool writes are right from the start.
#include "commands/new_command.h"
#include "commands/packet_folders.h"
#include "output/utf8.h"
#include "rules/check_packet.h"
#include "skeleton/packet_files.h"
#include "support/log_maker.h"
#include "support/scratch_folder.h"

#include <doctest/doctest.h>
#include <stdexcept>

namespace {

using skeleton::Device;

Device Made(const std::string& id, const std::vector<std::string>& functions,
            const std::vector<std::wstring>& generations = {L"WIN10", L"WIN7", L"VISTA",
                                                            L"WINXP"}) {
    Device device;
    skeleton::ReadId(id, device);
    for (const std::string& function : functions) {
        device.Functions.push_back(skeleton::ReadFunction(function));
    }
    for (const std::wstring& name : generations) {
        device.Generations.push_back(*GenerationNamed(name));
    }
    return device;
}

Device Switched(Device device, const std::string& storage, const std::string& command) {
    device.Before = skeleton::ReadStorage(storage, command);
    return device;
}

std::vector<Device> Devices() {
    const std::vector<std::string> all = {"Ports", "Modem",  "Net", "Media",
                                          "Image", "System", "USB"};
    const std::vector<std::string> twelve(12, "Ports:\xC3\x9C"
                                              "berwachung");
    return {
        Made("1234:5678", {"Modem"}),
        Made("12ab:CD01", {"ports:Diagnostics port", "Modem:Data modem"}),
        Made("0000:FFFF", all),
        Made("1234:5678", twelve),
        Switched(Made("1234:5678", {"Ports", "Modem", "Net"}), "Demo,Modem,0100",
                 "11,06,20,00,00,01"),
        Switched(Made("1234:5678", {"Net"}), "A,A product of 16,1.0", "1,2,3,4,5,FF"),
    };
}

class Written {
public:
    explicit Written(const Device& device) {
        std::map<std::string, std::string> files;
        for (const auto& [name, bytes] : skeleton::PacketFiles(device)) {
            files[Utf8(name)] = bytes;
        }
        folder_.Fill(files);
        modem_.Fill({{"new.modem", skeleton::ModemDescription(device)}});
        Packet = rules::ReadPacket(folder_.Path(), commands::GenerationsOf(folder_.Path()));
        Packet.Modem = reading::ReadModemDescription(modem_.Path() + L"\\new.modem");
    }

    rules::Packet Packet;

private:
    ScratchFolder folder_{L"new"};
    ScratchFolder modem_{L"newmodem"};
};

std::string RulesFound(const rules::Packet& packet) {
    std::string names;
    for (const rules::Finding& finding : rules::CheckPacket(packet)) {
        names += std::string(RuleOf(finding.Id).Name) + ": " + Utf8(finding.Message) + "; ";
    }
    return names;
}

// The program is added when the packet is shipped.
const std::string OnlyTheProgram = "program-missing: Setup.exe is not in the folder; ";

} // namespace

TEST_CASE("A check has nothing to say on a new packet, and its plan is the one that is meant") {
    for (const Device& device : Devices()) {
        CAPTURE(Utf8(device.IdOf(0)));
        CAPTURE(device.Functions.size());
        const Written written(device);
        CHECK(RulesFound(written.Packet) == OnlyTheProgram);
        CHECK(written.Packet.Generations.size() == 4);
        for (const rules::PacketGeneration& generation : written.Packet.Generations) {
            const plan::Plan& plan = generation.Install;
            CHECK(plan.Main.End == plan::Outcome::Success);
            CHECK(plan.Pairs.size() == device.Functions.size());
            REQUIRE(plan.ExpectedCounts.size() == 1);
            CHECK(plan.ExpectedCounts.front().Functions == device.Functions.size());
        }
    }
}

TEST_CASE("The drive's ID is filled up as Windows does it") {
    const skeleton::Storage storage = skeleton::ReadStorage("My Ven,Stick,1.0", "11,06,20,0,0,1");
    CHECK(Utf8(skeleton::DriveId(storage)) == "USBSTOR\\CdRomMy_Ven__Stick___________1.0_");
}

TEST_CASE("What cannot be meant is refused") {
    Device device;
    CHECK_THROWS_AS(skeleton::ReadId("1234", device), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadId("123:4567", device), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadId("123G:4567", device), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadFunction("Port"), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadFunction("Ports:a \"name\""), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadStorage("a,b", "1,2,3,4,5,6"), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadStorage("123456789,b,c", "1,2,3,4,5,6"), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadStorage("a,b,c", "1,2,3,4,5"), std::runtime_error);
    CHECK_THROWS_AS(skeleton::ReadStorage("a,b,c", "1,2,3,4,5,100"), std::runtime_error);
}

TEST_CASE("A folder that holds something is left alone") {
    ScratchFolder folder(L"full");
    folder.Fill({{"Setup.ini", "mine"}});
    commands::NewOptions options;
    options.Folder = Utf8(folder.Path());
    options.Device = "1234:5678";
    options.Functions = {"Modem"};
    CHECK_THROWS_AS(commands::RunNew(options), std::runtime_error);
    CHECK(log_maker::ReadFile(folder.Path() + L"\\Setup.ini") == "mine");
}
