#include "proof/scene.h"

#include "config/driver_packet.h"
#include "inf/driver_files.h"
#include "inf/models.h"
#include "machine/state.h"
#include "machine/text.h"

#include <algorithm>

namespace proof {

namespace {

using namespace machine;

const std::wstring Packet = L"D:\\Packet\\";
const std::wstring Store = L"C:\\Windows\\INF\\";

std::wstring ClassOf(const std::wstring& inf) {
    std::wstring name;
    try {
        GetInfClassName(inf, name);
    } catch (const ProcessEnded&) {
        name.clear();
    }
    return name;
}

struct Listed {
    std::wstring Id;
    std::wstring ClassName;
};

// Every ID that the packet lists, once, with the class of the first INF that lists it.
std::vector<Listed> ListedIds() {
    std::vector<Listed> listed;
    TextList infs;
    FindDriverPacketFiles(GetDriverDir(), L"*.INF", infs);
    for (const std::wstring& inf : infs) {
        DeviceIdList ids;
        GetDeviceIDFromInf(inf, ids);
        for (const std::wstring& id : ids) {
            const bool known = std::any_of(listed.begin(), listed.end(), [&id](const auto& entry) {
                return SameText(entry.Id, id);
            });
            if (!known) {
                listed.push_back({id, ClassOf(inf)});
            }
        }
    }
    return listed;
}

// What a bus reports as a device's own ID: no class of devices, no vendor alone, no revision.
bool IsReported(const std::wstring& id) {
    const std::wstring lower = Lower(id);
    if (!StartsWith(lower, L"usb\\")) {
        return lower.find(L'\\') != std::wstring::npos;
    }
    return StartsWith(lower, L"usb\\vid_") && lower.find(L"&pid_") != std::wstring::npos &&
           lower.find(L"&rev_") == std::wstring::npos;
}

std::vector<Interface> InterfacesOf(const std::wstring& id) {
    if (Lower(id).find(L"&mi_") != std::wstring::npos) {
        return {};
    }
    return {{.ClassGuid = UsbDeviceInterface, .Path = L"\\\\?\\" + id}};
}

void Plug(Machine& m, const std::wstring& id, const std::wstring& className) {
    const std::wstring instance = id + L"\\1";
    if (!m.HasDevice(instance)) {
        m.AddDevice({.InstanceId = instance, .Interfaces = InterfacesOf(id)});
    }
    Device& device = m.At(instance);
    device.Present = true;
    device.Removed = false;
    device.Class = className.empty() ? std::optional<std::wstring>() : className;
}

void PlugDrive(Machine& m) {
    const std::wstring instance = L"USBSTOR\\CdRom&Ven_Demo&Prod_Modem&Rev_0100\\1";
    if (!m.HasDevice(instance)) {
        m.AddDevice({.InstanceId = instance,
                     .HardwareIds = {L"USBSTOR\\CdRomDemo____Modem___________0100"},
                     .Class = L"CDROM",
                     .Interfaces = {{.ClassGuid = CdromInterface, .Path = L"\\\\?\\drive"}}});
    }
}

void ClearStore(Machine& m) {
    for (const std::wstring& file : m.Files(L"C:\\Windows\\INF")) {
        if (StartsWith(Lower(FileName(file)), L"oem")) {
            m.RemoveFile(file);
        }
    }
}

void FillStore(Machine& m) {
    ClearStore(m);
    m.WriteBytes(Store + L"oem0.inf", "somebody else's, and no INF that can be read");
    TextList infs;
    FindDriverPacketFiles(GetDriverDir(), L"*.INF", infs);
    int number = 1;
    for (const std::wstring& inf : infs) {
        m.WriteBytes(Store + L"oem" + std::to_wstring(number++) + L".inf", m.ReadBytes(inf));
    }
}

} // namespace

void PutPacket(Machine& m, const RandomPacket& packet) {
    m.SetWindowsVersion(L"10.0.19041.1");
    m.WriteIni(packet.Ini);
    m.MakeFolder(Packet + L"WIN10");
    for (const PacketFile& inf : packet.Infs) {
        m.WriteText(Packet + L"WIN10\\" + inf.Name, inf.Text);
    }
    for (const std::wstring& driver : packet.Drivers) {
        m.WriteBytes(Packet + L"WIN10\\" + driver, "driver");
    }
}

void SetUpAsPlanned(Machine& m) {
    FillStore(m);
    // Devices of an earlier run, among them those that wait to come back.
    m.Inside().Nodes.clear();
    for (const Listed& listed : ListedIds()) {
        if (IsReported(listed.Id)) {
            Plug(m, listed.Id, listed.ClassName);
        }
    }
    PlugDrive(m);
}

void SetUpAtRandom(Machine& m, Dice& dice) {
    ClearStore(m);
    if (dice.Once(2)) {
        FillStore(m);
    }
    m.Inside().Nodes.clear();
    m.AddDevice({.InstanceId = L"USB\\VID_1234&PID_5678\\1", .Class = L"Net"});
    for (const Listed& listed : ListedIds()) {
        if (!IsReported(listed.Id) || dice.Once(4)) {
            continue;
        }
        Plug(m, listed.Id, dice.Pick({L"", L"Ports", L"Modem", L"CDROM", L"Net"}));
        if (dice.Once(8)) {
            m.AddDevice({.InstanceId = listed.Id + L"\\2"});
        }
    }
    if (dice.Once(2)) {
        PlugDrive(m);
    }
}

} // namespace proof
