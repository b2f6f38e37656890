#include "proof/random_packet.h"

#include "proof/dice.h"
#include "proof/random_settings.h"

namespace proof {

namespace {

constexpr std::uint32_t MostInfs = 6;
constexpr std::uint32_t FaultOnceIn = 40;

std::wstring AnyId(Dice& dice) {
    std::wstring id =
        L"USB\\VID_3A9D&PID_" + dice.Pick({L"9001", L"9003", L"9011", L"901E", L"A001", L"A002"});
    if (dice.Once(12)) {
        return dice.Pick({L"USB\\Class_02", L"USB\\VID_3A9D", L"*PNP0501", L"PCI\\VEN_1000&DEV_2",
                          L"usb\\vid_3a9d&pid_9001"});
    }
    if (dice.Once(15)) {
        id += L"&REV_0100";
    }
    if (!dice.Once(3)) {
        id += dice.Pick({L"&MI_0", L"&MI_0", L"&mi_0"}) + dice.Number(4);
    }
    return id;
}

std::wstring AnyDecoration(Dice& dice) {
    return dice.Pick({L"NTamd64", L"NTamd64", L"NTamd64", L"NTAMD64", L"NT", L"NTx86", L"",
                      L"NTamd64.6.1", L"NTia64"});
}

// A models line; now and then with compatible IDs, or without an install section.
std::wstring ModelsLine(Dice& dice, std::uint32_t install) {
    std::wstring line = dice.Pick({L"%Device%", L"\"A device\"", L"Device"}) + L" = ";
    if (dice.Once(FaultOnceIn * 3)) {
        return line + L"\r\n";
    }
    line += L"Install" + std::to_wstring(install);
    for (std::uint32_t count = 1 + (dice.Once(5) ? dice.Below(3) : 0); count != 0; --count) {
        line += L", " + AnyId(dice);
    }
    return line + L"\r\n";
}

std::wstring Section(const std::wstring& name, const std::wstring& decoration) {
    return L"[" + name + (decoration.empty() ? L"" : L"." + decoration) + L"]\r\n";
}

struct Writer {
    Dice& Random;
    std::wstring Text{};
    std::uint32_t Installs = 1;

    void Version() {
        Text += L"; A packet at random\r\n[Version]\r\nSignature=\"$Windows NT$\"\r\n";
        if (Random.Once(FaultOnceIn)) {
            Text += L"Class=\r\n";
        } else if (!Random.Once(8)) {
            Text += L"Class=" +
                    Random.Pick({L"Ports", L"PORTS", L"modem", L"Net", L"%Class%", L"Media", L"USB",
                                 L"\"Image\""}) +
                    L"\r\n";
        }
    }

    // One or two manufacturers with their models sections.
    void Models() {
        std::wstring sections;
        Text += L"[Manufacturer]\r\n";
        const std::uint32_t makers = Random.Once(6) ? 2 : 1;
        for (std::uint32_t maker = 0; maker < makers; ++maker) {
            const std::wstring name = L"Models" + std::to_wstring(maker);
            Text += L"%Maker% = " + name;
            sections += ModelsSection(name, Random.Once(3) ? L"" : L"-");
            for (std::uint32_t count = 1 + (Random.Once(4) ? 1 : 0); count != 0; --count) {
                const std::wstring decoration = AnyDecoration(Random);
                Text += L"," + decoration;
                sections += ModelsSection(name, decoration);
            }
            Text += L"\r\n";
        }
        Text += sections;
    }

    // "-" is a decoration that nobody names: the section is not read.
    std::wstring ModelsSection(const std::wstring& name, const std::wstring& decoration) {
        std::wstring section = Section(name, decoration);
        for (std::uint32_t count = 1 + Random.Below(2); count != 0; --count) {
            section += ModelsLine(Random, Random.Below(Installs + 1));
        }
        return section;
    }

    void Copies(std::uint32_t number) {
        const std::wstring folder =
            Random.Pick({L"12", L"12", L"12", L"11", L"10,System32\\Modem", L"13", L"-"});
        std::wstring directories;
        std::wstring copies;
        for (std::uint32_t install = 0; install <= Installs; ++install) {
            std::wstring names;
            for (std::uint32_t count = Random.Below(3); count != 0; --count) {
                const std::wstring section =
                    L"Copy" + std::to_wstring(install) + L"_" + std::to_wstring(count);
                names += (names.empty() ? L"" : L", ") + section;
                copies += CopySection(section, number);
                directories += section + L" = " + folder + L"\r\n";
            }
            if (!names.empty()) {
                Text += Section(L"Install" + std::to_wstring(install),
                                Random.Pick({L"NTamd64", L"NTamd64", L"NT", L""})) +
                        L"CopyFiles = " + names + L"\r\n";
            }
        }
        Text += copies + L"[DestinationDirs]\r\n";
        Text += Random.Once(3) ? L"DefaultDestDir = 12\r\n" : directories;
        if (Random.Once(FaultOnceIn)) {
            Text += L"DefaultDestDir = 10\r\n";
        }
    }

    std::wstring CopySection(const std::wstring& name, std::uint32_t number) {
        std::wstring section = L"[" + name + L"]\r\n" + DriverName(number) + L"\r\n";
        if (Random.Once(FaultOnceIn)) {
            section += DriverName(number) + L"\r\nmore.sys\r\n";
        }
        return section;
    }

    std::wstring DriverName(std::uint32_t number) {
        return Random.Pick({L"modem", L"Port", L"net"}) + std::to_wstring(number) + L".sys";
    }

    void Strings() {
        Text += L"[Strings]\r\nMaker=\"Maker\"\r\nDevice=\"Device, with a comma\"\r\n"
                L"Class=Modem\r\n";
    }
};

} // namespace

RandomPacket MakePacket(std::uint32_t seed) {
    Dice dice(seed);
    RandomPacket packet;
    packet.Ini = MakeSettings(dice);
    const std::uint32_t infs = dice.Once(50) ? 0 : 1 + dice.Below(MostInfs);
    for (std::uint32_t number = 0; number < infs; ++number) {
        Writer writer{dice};
        writer.Version();
        writer.Models();
        writer.Copies(number);
        writer.Strings();
        packet.Infs.push_back({dice.Pick({L"a", L"B", L"modem", L"Z", L"port"}) +
                                   std::to_wstring(number) + dice.Pick({L".inf", L".INF"}),
                               writer.Text});
        if (!dice.Once(4)) {
            packet.Drivers.push_back(L"modem" + std::to_wstring(number) + L".sys");
        }
    }
    return packet;
}

} // namespace proof
