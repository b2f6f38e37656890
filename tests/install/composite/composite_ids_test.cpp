#include "install/composite/composite_ids.h"

#include "install/engine.h"

using namespace machine;

namespace {

const std::string MarkerLine =
    "GetCompositeDeviceIDFromInf: kkkkkkkkkk D:\\Packet\\WIN7\\ kkkkkkkkk";
const std::wstring Id9001 = L"USB\\VID_3A9D&PID_9001";

// One INF with these IDs.
void AddPacket(Machine& m, const WideTexts& ids) {
    m.AddInf(L"WIN7\\modem.inf", Inf{.Ids = ids});
}

} // namespace

TEST_CASE("Exact IDs stand in front, the last one first, derived ones follow in order") {
    Machine m;
    AddPacket(m, {Id9001 + L"&MI_00", Id9001 + L"&MI_02", L"usb\\vid_3a9d&pid_9002",
                  L"USB\\VID_3A9D&PID_9003"});
    TextList ids;
    bool exact = false;
    CHECK(GetCompositeDeviceIDFromInf(ids, exact));
    CHECK(ids == TextList{L"USB\\VID_3A9D&PID_9003", L"USB\\VID_3A9D&PID_9002", Id9001});
    CHECK(exact);
    CHECK(m.Log() == Lines{FolderLine, MarkerLine});
    std::wstring id;
    CHECK(GetCompositeDeviceIDFromInfExactMatch(id));
    CHECK(id == L"USB\\VID_3A9D&PID_9003");
    CheckTidy(m);
}

TEST_CASE("The IDs of all INF files are collected in listing order") {
    Machine m;
    m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {L"USB\\VID_3A9D&PID_9011&MI_00"}});
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id9001 + L"&MI_00"}});
    TextList ids;
    bool exact = false;
    CHECK(GetCompositeDeviceIDFromInf(ids, exact));
    CHECK(ids == TextList{Id9001, L"USB\\VID_3A9D&PID_9011"});
    CHECK_FALSE(exact);
}

TEST_CASE("The packet's composite IDs join the caller's list, and the flag only ever rises") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id9001 + L"&MI_00", L"USB\\VID_3A9D&PID_9011&MI_00"}});
    TextList ids{L"usb\\vid_3a9d&pid_9011", L"what was there before"};
    bool exact = true;
    CHECK(GetCompositeDeviceIDFromInf(ids, exact));
    CHECK(ids == TextList{L"usb\\vid_3a9d&pid_9011", L"what was there before", Id9001});
    CHECK(exact);
}

TEST_CASE("A lower-case interface mark is found") {
    Machine m;
    AddPacket(m, {L"usb\\vid_3a9d&pid_9001&mi_02"});
    TextList ids;
    bool exact = false;
    CHECK(GetCompositeDeviceIDFromInf(ids, exact));
    CHECK(ids == TextList{Id9001});
    CHECK_FALSE(exact);
}

TEST_CASE("An exact ID that an interface ID brought into the list keeps its place and counts") {
    Machine m;
    AddPacket(m, {L"USB\\VID_3A9D&PID_9011&MI_00", Id9001 + L"&MI_00", Id9001});
    std::wstring id;
    CHECK(GetCompositeDeviceIDFromInfExactMatch(id));
    // The first entry is what counts, although it is a derived one here.
    CHECK(id == L"USB\\VID_3A9D&PID_9011");
}

TEST_CASE("IDs are cut to 199 characters") {
    Machine m;
    AddPacket(m, {L"USB\\" + std::wstring(300, L'a')});
    std::wstring id;
    CHECK(GetCompositeDeviceIDFromInfExactMatch(id));
    CHECK(id == L"USB\\" + std::wstring(195, L'A'));
}

TEST_CASE("Letters beyond ASCII are not upper-cased") {
    Machine m;
    AddPacket(m, {L"usb\\caf\u00e9"});
    std::wstring id;
    CHECK(GetCompositeDeviceIDFromInfExactMatch(id));
    CHECK(id == L"USB\\CAF\u00e9");
}

TEST_CASE("A packet with interface IDs only has no exact match, but can be present") {
    Machine m;
    AddPacket(m, {Id9001 + L"&MI_00"});
    std::wstring id;
    CHECK_FALSE(GetCompositeDeviceIDFromInfExactMatch(id));
    CHECK(m.Log() == Lines{FolderLine, MarkerLine,
                           "GetCompositeDeviceIDFromInfExactMatch: No exact match composite device "
                           "exist in inf file"});
    CHECK(id.empty());

    m.AddDevice(Device{.InstanceId = L"usb\\Vid_3A9D&Pid_9001\\serial"});
    m.ForgetJournal();
    CHECK(GetCompositeDeviceIDExist(id));
    CHECK(id == L"usb\\Vid_3A9D&Pid_9001");
    CHECK(m.Story() ==
          Lines{"LOG " + FolderLine, "LOG " + MarkerLine, "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)",
                "SetupDiGetClassDevsW(null, USB, 0x6)", "SetupDiEnumDeviceInfo(set1, 0)",
                "SetupDiGetDeviceInstanceIdW(set1, usb\\Vid_3A9D&Pid_9001\\serial, 200)",
                "LOG GetCompositeDeviceIDExist: Composite device usb\\Vid_3A9D&Pid_9001 is going "
                "to be deal with"});
    CheckTidy(m);
}

TEST_CASE("The first present device of the packet is taken, the rest is not looked at") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    AddPacket(m, {Id9001, L"USB\\VID_3A9D&PID_9003"});
    m.AddDevice(Device{.InstanceId = L"PCI\\VID_3A9D\\1"});
    m.AddDevice(Device{.InstanceId = L"USB\\VID_3A9D&PID_9001\\1", .Present = false});
    m.AddDevice(Device{.InstanceId = L"USB\\VID_3A9D&PID_9001&MI_00\\1"});
    m.AddDevice(Device{.InstanceId = L"USB\\VID_3A9D&PID_9003\\2"});
    m.AddDevice(Device{.InstanceId = L"USB\\VID_3A9D&PID_9003\\1"});
    std::wstring id;
    CHECK(GetCompositeDeviceIDExist(id));
    CHECK(id == L"USB\\VID_3A9D&PID_9003");
    CHECK(m.CallsOf("SetupDiEnumDeviceInfo").size() == 2);
}

TEST_CASE("A present device whose instance ID has no backslash is compared whole") {
    Machine m;
    AddPacket(m, {L"USB"});
    m.AddDevice(Device{.InstanceId = L"Usb"});
    std::wstring id;
    CHECK(GetCompositeDeviceIDExist(id));
    CHECK(id == L"Usb");
}

TEST_CASE("A composite device that is not present is reported") {
    Machine m;
    AddPacket(m, {Id9001});
    m.AddDevice(Device{.InstanceId = L"USB\\VID_1111&PID_2222\\1"});
    std::wstring id;
    CHECK_FALSE(GetCompositeDeviceIDExist(id));
    CHECK(m.Log() ==
          Lines{FolderLine, MarkerLine,
                "GetCompositeDeviceIDExist: No composite device in inf found in system"});
    CheckTidy(m);
}

TEST_CASE("Present devices that cannot be listed or read are reported") {
    struct Row {
        const char* Function;
        const char* Line;
    };
    for (const Row& row :
         {Row{"SetupDiGetClassDevsW",
              "GetCompositeDeviceIDExist: Get all present device fail,error code 0x000005AA"},
          Row{"SetupDiGetDeviceInstanceIdW",
              "GetCompositeDeviceIDExist: Get device Instance id fail!,error code : 0X000005AA"},
          Row{"SetupDiEnumDeviceInfo",
              "GetCompositeDeviceIDExist: Enum device set info fail,error code 0x000005AA"}}) {
        CAPTURE(row.Function);
        Machine m;
        AddPacket(m, {Id9001});
        m.AddDevice(Device{.InstanceId = L"USB\\VID_3A9D&PID_9001\\1"});
        m.FailCall(row.Function, 1, 1450);
        std::wstring id;
        CHECK_FALSE(GetCompositeDeviceIDExist(id));
        CHECK(m.Log() == Lines{FolderLine, MarkerLine, row.Line});
        CHECK(id.empty());
        CheckTidy(m);
    }
}

TEST_CASE("A packet folder that is missing, empty or without IDs is reported") {
    struct Row {
        const char* What;
        const char* Line;
    };
    for (const Row& row :
         {Row{"missing",
              "GetCompositeDeviceIDFromInf: Get driver packet D:\\Packet\\WIN7\\ inf set "
              "fail,error code 0x00000003"},
          Row{"empty",
              "GetCompositeDeviceIDFromInf: No inf found in driver packet D:\\Packet\\WIN7\\"},
          Row{"without IDs", "GetCompositeDeviceIDFromInf: No device found in driver packet "
                             "D:\\Packet\\WIN7\\"}}) {
        CAPTURE(row.What);
        Machine m;
        if (row.What != std::string_view("missing")) {
            m.MakeFolder(L"D:\\Packet\\WIN7");
        }
        if (row.What == std::string_view("without IDs")) {
            AddPacket(m, {});
        }
        TextList ids;
        bool exact = false;
        CHECK_FALSE(GetCompositeDeviceIDFromInf(ids, exact));
        CHECK(m.Log() == Lines{FolderLine, MarkerLine, row.Line});
        std::wstring id;
        CHECK_FALSE(GetCompositeDeviceIDFromInfExactMatch(id));
        CHECK_FALSE(GetCompositeDeviceIDExist(id));
        CheckTidy(m);
    }
}

TEST_CASE("An INF that cannot be read is reported under the first INF's path") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id9001}});
    m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {Id9001}});
    // a.inf is opened three times: manufacturers, and a plain and a decorated models section.
    m.FailCall("SetupOpenInfFileW", 4, 5);
    TextList ids;
    bool exact = false;
    CHECK_FALSE(GetCompositeDeviceIDFromInf(ids, exact));
    CHECK(m.Log() ==
          Lines{FolderLine, MarkerLine,
                "GetInfSectionText: Open inf D:\\Packet\\WIN7\\b.inf fail,error code 0x00000005",
                "GetCompositeDeviceIDFromInf: Get device id from inf D:\\Packet\\WIN7\\a.inf "
                "fail,error code 0x00000005"});
    CheckTidy(m);
}
