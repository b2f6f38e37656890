#include "install/mode_switch/shift_device.h"

#include "common/run_state.h"
#include "install/engine.h"

#include <algorithm>

using namespace machine;

namespace {

const std::wstring Stick = L"USB\\VID_3A9D&PID_9001\\1";
const std::wstring CdRom = L"USBSTOR\\CDROM&VEN_MAKER&PROD_MODEM&REV_1.00\\1";
const std::wstring CdRomId = L"USBSTOR\\CdRomMaker___Modem___________1.00";
const std::wstring StickPath = L"\\\\?\\usb#vid_3a9d&pid_9001#1#{a5dcbf10}";
const std::wstring CdRomPath = L"\\\\?\\usbstor#cdrom#1#{53f56308}";
const std::string MarkerLine =
    "GetCompositeDeviceIDFromInf: kkkkkkkkkk D:\\Packet\\WIN7\\ kkkkkkkkk";
const std::string UsbEnd = "ShiftDevice: IOCTL send finish result is 0x00000000,begin to install "
                           "driver";

Device UsbStick(const std::wstring& instanceId = Stick, const std::wstring& path = StickPath) {
    return Device{.InstanceId = instanceId,
                  .Interfaces = {{.ClassGuid = UsbDeviceInterface, .Path = path}}};
}

Device CdRomDrive(const std::wstring& instanceId = CdRom, const std::wstring& path = CdRomPath) {
    return Device{.InstanceId = instanceId,
                  .HardwareIds = {CdRomId, L"USBSTOR\\CdRom"},
                  .Interfaces = {{.ClassGuid = CdromInterface, .Path = path}}};
}

// Shifting by control code, with a packet that lists the stick.
void DescribeUsb(Machine& m, const std::wstring& packetId = L"usb\\vid_3a9d&pid_9001") {
    InstallModeValue = 1;
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSHIFTMODE=1\r\n");
    m.AddInf(L"WIN7\\modem.inf", Inf{.Ids = {packetId}});
}

// Shifting by SCSI command.
void DescribeScsi(Machine& m, const std::wstring& command = L"1b,0,0,0,2,0") {
    InstallModeValue = 1;
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSCSIDEVICE=" + CdRomId + L"\r\nSCSICMD=" +
               command + L"\r\n");
}

// The command descriptor block of the only order.
std::vector<unsigned char> SentCommand(const Machine& m) {
    REQUIRE(m.Orders().size() == 1);
    const std::vector<unsigned char>& request = m.Orders()[0].Input;
    REQUIRE(request.size() == 96);
    return {request.begin() + 36, request.begin() + 52};
}

std::vector<unsigned char> Padded(std::vector<unsigned char> bytes) {
    bytes.resize(16);
    return bytes;
}

// The pass-through request as it must go out, but for the pointer at offset 24.
std::vector<unsigned char> ExpectedRequest() {
    std::vector<unsigned char> request(96);
    request[0] = 56;   // Length
    request[4] = 1;    // TargetId
    request[6] = 6;    // CdbLength
    request[7] = 24;   // SenseInfoLength
    request[8] = 1;    // DataIn
    request[12] = 128; // DataTransferLength
    request[16] = 30;  // TimeOutValue
    request[32] = 60;  // SenseInfoOffset
    request[36] = 0x1B;
    request[40] = 2;
    return request;
}

} // namespace

TEST_CASE("A switch that is off, absent or 256 shifts nothing and writes no line") {
    for (const wchar_t* value : {L"", L"NEEDSHIFTDEVICE=0", L"NEEDSHIFTDEVICE=256"}) {
        Machine m;
        m.WriteIni(std::wstring(L"[SHIFTDEVICE]\r\nSHIFTMODE=1\r\n") + value);
        m.AddDevice(UsbStick());
        CHECK(ShiftDevice());
        CHECK(m.Story() == Lines{});
    }
}

TEST_CASE("Shift mode 1 sends the vendor's control code to the device of the packet") {
    Machine m;
    DescribeUsb(m);
    m.AddDevice(UsbStick());
    CHECK(ShiftDevice());
    CHECK(m.Story() ==
          Lines{"LOG ShiftDevice: Shifting device...", "LOG ShiftDevice: Shift mode is 1",
                "LOG " + FolderLine, "LOG " + MarkerLine, "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)",
                "SetupDiGetClassDevsW(UsbDevice, null, 0x12)",
                "SetupDiEnumDeviceInterfaces(set1, UsbDevice, 0)",
                "SetupDiGetDeviceInterfaceDetailW(set1, null, 0)",
                "SetupDiGetDeviceInterfaceDetailW(set1, _, 82)",
                "SetupDiGetDeviceRegistryPropertyW(set1, USB\\VID_3A9D&PID_9001\\1, 1, 0)",
                "SetupDiGetDeviceRegistryPropertyW(set1, USB\\VID_3A9D&PID_9001\\1, 1, 216)",
                "LOG ShiftDevice: Shift device USB\\VID_3A9D&PID_9001 found,sending ioctl...",
                "CreateFileW(\\\\?\\usb#vid_3a9d&pid_9001#1#{a5dcbf10}, 0xC0000000, 0x3, 3, 0x0)",
                "DeviceIoControl(device1, 0x222190, 0, 0)", "LOG " + UsbEnd});
    REQUIRE(m.Orders().size() == 1);
    CHECK(m.Orders()[0].Path == StickPath);
    CHECK(m.Orders()[0].Code == 0x00222190);
    CHECK(m.Orders()[0].Input.empty());
    CHECK(m.Orders()[0].OutputSize == 0);
    CheckTidy(m);
}

TEST_CASE("Any other shift mode sends the SCSI command to the CD-ROM") {
    for (const wchar_t* mode : {L"", L"SHIFTMODE=0", L"SHIFTMODE=2", L"SHIFTMODE=257"}) {
        Machine m;
        InstallModeValue = 1;
        m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSCSIDEVICE=" + CdRomId +
                   L"\r\nSCSICMD=1b,0,0,0,2,0\r\n" + mode);
        m.AddDevice(CdRomDrive());
        CHECK(ShiftDevice());
        REQUIRE(m.Orders().size() == 1);
        CHECK(m.Orders()[0].Code == 0x0004D014);
    }
}

TEST_CASE("The SCSI way asks, opens and sends in this order") {
    Machine m;
    DescribeScsi(m);
    m.AddDevice(CdRomDrive());
    CHECK(ShiftDevice());
    const std::string drive = "set1, USBSTOR\\CDROM&VEN_MAKER&PROD_MODEM&REV_1.00\\1, ";
    CHECK(m.Story() ==
          Lines{"LOG ShiftDevice: Shifting device...", "LOG ShiftDevice: Shift mode is 0",
                "SetupDiGetClassDevsW(Cdrom, null, 0x12)",
                "SetupDiEnumDeviceInterfaces(set1, Cdrom, 0)",
                "SetupDiGetDeviceInterfaceDetailW(set1, null, 0)",
                "SetupDiGetDeviceInterfaceDetailW(set1, _, 66)",
                "SetupDiGetDeviceRegistryPropertyW(" + drive + "1, 0)",
                "SetupDiGetDeviceRegistryPropertyW(" + drive + "1, 228)",
                "LOG ShiftDevice: SCSI device USBSTOR\\CdRomMaker___Modem___________1.00 "
                "found,sending SCSI cmd 1b,0,0,0,2,0",
                "CreateFileW(\\\\?\\usbstor#cdrom#1#{53f56308}, 0xC0000000, 0x3, 3, 0x0)",
                "DeviceIoControl(device1, 0x4D014, 96, 96)",
                "LOG ShiftDevice: Send SCSI cmd 1b,0,0,0,2,0 finish,result is 0x00000000,begin to "
                "install driver"});
    CheckTidy(m);
}

TEST_CASE("All 96 bytes of the SCSI request are as they must be") {
    Machine m;
    DescribeScsi(m);
    m.AddDevice(CdRomDrive());
    CHECK(ShiftDevice());
    REQUIRE(m.Orders().size() == 1);
    std::vector<unsigned char> request = m.Orders()[0].Input;
    REQUIRE(request.size() == 96);
    CHECK(m.Orders()[0].OutputSize == 96);
    const auto pointer = request.begin() + 24;
    CHECK(std::any_of(pointer, pointer + 8, [](unsigned char byte) { return byte != 0; }));
    std::fill(pointer, pointer + 8, static_cast<unsigned char>(0));
    CHECK(request == ExpectedRequest());
}

TEST_CASE("The command's text becomes up to six bytes") {
    struct Row {
        const wchar_t* Text;
        std::vector<unsigned char> Bytes;
    };
    for (const Row& row : {Row{L"1b,0,0,0,2,0", {0x1B, 0, 0, 0, 2, 0}}, Row{L"1b", {0x1B}},
                           Row{L"FF,1,2,3,4,5,6,7", {0xFF, 1, 2, 3, 4, 5}}, Row{L"1b,zz,1", {0x1B}},
                           Row{L"1b,,2", {0x1B}}, Row{L"1b 2,3", {0x1B}}, Row{L"123,4", {0x12}},
                           Row{L"no command", {}}}) {
        CAPTURE(std::wstring(row.Text));
        Machine m;
        DescribeScsi(m, row.Text);
        m.AddDevice(CdRomDrive());
        CHECK(ShiftDevice());
        CHECK(SentCommand(m) == Padded(row.Bytes));
        CHECK(m.Orders()[0].Input[6] == 6);
    }
}

TEST_CASE("A missing SCSI configuration fails with its line") {
    Machine m;
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSHIFTMODE=2\r\nSCSICMD=1b\r\n");
    CHECK_FALSE(ShiftDevice());
    CHECK(m.Log() == Lines{"ShiftDevice: Shifting device...", "ShiftDevice: Shift mode is 2",
                           "ShiftDevice: No shift device configuration found"});
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSHIFTMODE=2\r\nSCSIDEVICE=X\r\n");
    m.ForgetJournal();
    CHECK_FALSE(ShiftDevice());
    CHECK(m.Log() == Lines{"ShiftDevice: Shifting device...", "ShiftDevice: Shift mode is 2",
                           "ShiftDevice: No shift cmd configuration found"});
    CHECK(m.CallsOf("SetupDiGetClassDevsW").empty());
}

TEST_CASE("A packet without an exact ID cannot be shifted by control code") {
    Machine m;
    DescribeUsb(m, L"USB\\VID_3A9D&PID_9001&MI_00");
    m.AddDevice(UsbStick());
    CHECK_FALSE(ShiftDevice());
    const Lines log = LogWithoutFolders(m);
    REQUIRE(log.size() == 5);
    CHECK(log[3] == "GetCompositeDeviceIDFromInfExactMatch: No exact match composite device exist "
                    "in inf file");
    CHECK(log[4].starts_with("ShiftDevice: Get shift device id fail,error code 0x"));
    CHECK(m.Orders().empty());
}

TEST_CASE("A packet that is missing cannot be shifted by control code") {
    Machine m;
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSHIFTMODE=1\r\n");
    CHECK_FALSE(ShiftDevice());
    CHECK(m.Log().back() == "ShiftDevice: Get shift device id fail,error code 0x00000003");
}

TEST_CASE("The device's revision is cut, the configured one is not") {
    Machine m;
    DescribeUsb(m, L"USB\\VID_3A9D&PID_9001&REV_0100");
    m.AddDevice(UsbStick());
    CHECK(ShiftDevice());
    CHECK(m.Log().back() == "ShiftDevice: Shift device USB\\VID_3A9D&PID_9001&REV_0100 not found");
    CHECK(m.Orders().empty());
    CheckTidy(m);
}

TEST_CASE("A device's ID is upper-cased, cut at its revision and then compared whole") {
    struct Row {
        const wchar_t* HardwareId;
        bool Matches;
    };
    for (const Row& row :
         {Row{L"usb\\vid_3a9d&pid_9001&rev_0100", true}, Row{L"USB\\VID_3A9D&PID_9001", true},
          Row{L"USB\\VID_3A9D&PID_9001&REV_0100&MI_00", true},
          Row{L"USB\\VID_3A9D&PID_9001&MI_00", false}, Row{L"USB\\VID_3A9D&PID_90011", false},
          Row{L"USB\\VID_3A9D&PID_900", false}}) {
        CAPTURE(std::wstring(row.HardwareId));
        Machine m;
        DescribeUsb(m);
        Device stick = UsbStick();
        stick.HardwareIds = {row.HardwareId, L"USB\\VID_3A9D&PID_9001"};
        m.AddDevice(stick);
        CHECK(ShiftDevice());
        CHECK(m.Orders().size() == (row.Matches ? 1U : 0U));
    }
}

TEST_CASE("A CD-ROM matches by its whole first ID, revision included, the case ignored") {
    for (const bool matches : {true, false}) {
        Machine m;
        InstallModeValue = 1;
        m.WriteIni(
            std::wstring(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSCSICMD=1b\r\nSCSIDEVICE=") +
            (matches ? L"usbstor\\cdrommaker___modem___________1.00" : L"USBSTOR\\CdRom"));
        m.AddDevice(CdRomDrive());
        CHECK(ShiftDevice());
        CHECK(m.Orders().size() == (matches ? 1U : 0U));
        CHECK(m.Logged("ShiftDevice: SCSI device USBSTOR\\CdRom not found") == !matches);
    }
}

TEST_CASE("An order that succeeds is logged with 0, whatever error an earlier call left") {
    Machine m;
    m.Windows().AfterSuccess = Variants::LastError::Stray;
    DescribeUsb(m);
    m.AddDevice(UsbStick());
    CHECK(ShiftDevice());
    CHECK(m.Log().back() == UsbEnd);
}

TEST_CASE("A command that succeeds is logged with 0, whatever error an earlier call left") {
    Machine m;
    m.Windows().AfterSuccess = Variants::LastError::Stray;
    DescribeScsi(m, L"1b");
    m.AddDevice(CdRomDrive());
    CHECK(ShiftDevice());
    CHECK(m.Log().back() ==
          "ShiftDevice: Send SCSI cmd 1b finish,result is 0x00000000,begin to install driver");
}

TEST_CASE("A device that is not present is not found, which is no failure") {
    Machine m;
    DescribeUsb(m);
    m.AddDevice(UsbStick()).Present = false;
    m.AddDevice(CdRomDrive());
    CHECK(ShiftDevice());
    CHECK(m.Log().back() == "ShiftDevice: Shift device USB\\VID_3A9D&PID_9001 not found");
    CheckTidy(m);
}

TEST_CASE("Of two matching devices only the first one receives the order") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    DescribeUsb(m);
    m.AddDevice(UsbStick(L"USB\\VID_1111&PID_2222\\1", L"\\\\?\\usb#other"));
    m.AddDevice(UsbStick(L"USB\\VID_3A9D&PID_9001\\2", L"\\\\?\\usb#second"));
    m.AddDevice(UsbStick(Stick, StickPath));
    CHECK(ShiftDevice());
    REQUIRE(m.Orders().size() == 1);
    CHECK(m.Orders()[0].Path == StickPath);
    CHECK(m.CallsOf("SetupDiEnumDeviceInterfaces").size() == 2);
    CheckTidy(m);
}

TEST_CASE("Of two matching CD-ROMs only the first one receives the command") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    DescribeScsi(m);
    m.AddDevice(CdRomDrive(L"USBSTOR\\A\\1", L"\\\\?\\cdrom#first"));
    m.AddDevice(CdRomDrive(L"USBSTOR\\B\\1", L"\\\\?\\cdrom#second"));
    CHECK(ShiftDevice());
    REQUIRE(m.Orders().size() == 1);
    CHECK(m.Orders()[0].Path == L"\\\\?\\cdrom#first");
}

TEST_CASE("An order that the device refuses is only logged") {
    Machine usb;
    DescribeUsb(usb);
    usb.AddDevice(UsbStick()).Interfaces[0].OrderError = 31;
    CHECK(ShiftDevice());
    CHECK(usb.Log().back() ==
          "ShiftDevice: IOCTL send finish result is 0x0000001F,begin to install driver");
    CheckTidy(usb);
}

TEST_CASE("A SCSI command that the device refuses is only logged") {
    Machine m;
    DescribeScsi(m, L"1b");
    m.AddDevice(CdRomDrive()).Interfaces[0].OrderError = 31;
    CHECK(ShiftDevice());
    CHECK(m.Log().back() ==
          "ShiftDevice: Send SCSI cmd 1b finish,result is 0x0000001F,begin to install driver");
    CheckTidy(m);
}

TEST_CASE("Each system call of the control-code way that fails has its line") {
    struct Row {
        const char* Function;
        int Call;
        const char* Line;
    };
    for (const Row& row :
         {Row{"SetupDiGetClassDevsW", 1,
              "ShiftDevice: Get present shift device fail,error code 0x000005AA"},
          Row{"SetupDiEnumDeviceInterfaces", 1,
              "ShiftDevice: Enum device interface detail finish,exit code 0x000005AA"},
          Row{"SetupDiGetDeviceInterfaceDetailW", 1,
              "ShiftDevice: Get device interface detail fail,error code 0x000005AA"},
          Row{"SetupDiGetDeviceInterfaceDetailW", 2,
              "ShiftDevice: Get device interface detail fail,error code 0x000005AA"},
          Row{"SetupDiGetDeviceRegistryPropertyW", 1,
              "ShiftDevice: Get device hardware id fail,error code 0x000005AA"},
          Row{"SetupDiGetDeviceRegistryPropertyW", 2,
              "ShiftDevice: Get device hardware id fail,error code 0x000005AA"},
          Row{"CreateFileW", 1,
              "ShiftDevice: Open shift device USB\\VID_3A9D&PID_9001 fail,error code : "
              "0x000005AA"}}) {
        CAPTURE(row.Function);
        CAPTURE(row.Call);
        Machine m;
        DescribeUsb(m);
        m.AddDevice(UsbStick());
        m.FailCall(row.Function, row.Call, 1450);
        CHECK_FALSE(ShiftDevice());
        CHECK(m.Log().back() == row.Line);
        CHECK(m.Orders().empty());
        CheckTidy(m);
    }
}

TEST_CASE("Each system call of the SCSI way that fails has its line") {
    struct Row {
        const char* Function;
        const char* Line;
    };
    for (const Row& row :
         {Row{"SetupDiGetClassDevsW",
              "ShiftDevice: Get present cdrom device fail,error code 0x00000005"},
          Row{"SetupDiEnumDeviceInterfaces",
              "ShiftDevice: Enum device interface detail finish,exit code 0x00000005"},
          Row{"SetupDiGetDeviceInterfaceDetailW",
              "ShiftDevice: Get device interface detail fail,error code 0x00000005"},
          Row{"SetupDiGetDeviceRegistryPropertyW",
              "ShiftDevice: Get device hardware id fail,error code 0x00000005"},
          Row{"CreateFileW",
              "ShiftDevice: Open SCSI device USBSTOR\\CdRomMaker___Modem___________1.00 "
              "fail,error code : 0x00000005"}}) {
        CAPTURE(row.Function);
        Machine m;
        DescribeScsi(m);
        m.AddDevice(CdRomDrive());
        m.FailCall(row.Function, 1, 5);
        CHECK_FALSE(ShiftDevice());
        CHECK(m.Log().back() == row.Line);
        CHECK(m.Orders().empty());
        CheckTidy(m);
    }
}

TEST_CASE("In install mode 0 the present composite device is looked for first") {
    Machine m;
    DescribeUsb(m);
    InstallModeValue = 0;
    m.AddDevice(UsbStick());
    CHECK(ShiftDevice());
    const Lines log = LogWithoutFolders(m);
    REQUIRE(log.size() > 3);
    CHECK(log[0] == MarkerLine);
    CHECK(log[1] == "GetCompositeDeviceIDExist: Composite device USB\\VID_3A9D&PID_9001 is going "
                    "to be deal with");
    CHECK(log[2] == "ShiftDevice: Shifting device...");
    CHECK(m.Orders().size() == 1);
}

TEST_CASE("Configured texts are cut to their buffers") {
    Machine m;
    InstallModeValue = 1;
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSCSIDEVICE=" + std::wstring(400, L'd') +
               L"\r\nSCSICMD=" + std::wstring(5000, L'c') + L"\r\n");
    Device drive = CdRomDrive();
    drive.HardwareIds = {std::wstring(199, L'd')};
    m.AddDevice(drive);
    CHECK(ShiftDevice());
    CHECK(m.Logged("ShiftDevice: SCSI device " + std::string(199, 'd') +
                   " found,sending SCSI cmd " + std::string(1023, 'c')));
    CHECK(SentCommand(m) == Padded({0xCC}));
    CheckTidy(m);
}
