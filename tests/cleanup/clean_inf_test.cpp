// The store's copies of a packet INF.
#include "cleanup/clean_inf.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

#include <algorithm>
#include <utility>

using namespace machine;

namespace {

const std::wstring Id = L"USB\\VID_3A9D&PID_9001";
const std::wstring OtherId = L"USB\\VID_3A9D&PID_9002";

std::wstring AddPacketInf(Machine& m) {
    return m.AddInf(L"WIN7\\modem.inf", Inf{.Ids = {Id}});
}

std::string Deleted(const std::string& name) {
    return "RemoveFile: File C:\\Windows\\INF\\" + name + " was deleted successfully";
}

std::string Missing(const std::string& name) {
    return "RemoveFile: File C:\\Windows\\INF\\" + name + " not exist";
}

} // namespace

TEST_CASE(
    "An OEM INF that lists an ID of the packet is uninstalled; both names and their twins go") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.WriteText(L"C:\\Windows\\INF\\modem.inf", L"of an old system");
    m.AddOemInf(Inf{.Ids = {OtherId}});
    m.AddOemInf(Inf{.Ids = {L"usb\\vid_3a9d&pid_9001", OtherId}});
    m.ForgetJournal();
    CHECK(CleanInf(inf));
    CHECK(m.Story() ==
          Lines{"FindFirstFileW(C:\\Windows\\INF\\OEM*.INF)", "GetModuleHandleW(SETUPAPI.DLL)",
                m.CallsOf("GetProcAddress").empty() ? "" : m.CallsOf("GetProcAddress").front(),
                "SetupUninstallOEMInfW(oem1.inf, 0x1)",
                "GetFileAttributesW(C:\\Windows\\INF\\modem.inf)",
                "SetFileAttributesW(C:\\Windows\\INF\\modem.inf, 0x80)",
                "DeleteFileW(C:\\Windows\\INF\\modem.inf)", "LOG " + Deleted("modem.inf"),
                "GetFileAttributesW(C:\\Windows\\INF\\modem.PNF)", "LOG " + Missing("modem.PNF"),
                "GetFileAttributesW(C:\\Windows\\INF\\oem1.inf)", "LOG " + Missing("oem1.inf"),
                "GetFileAttributesW(C:\\Windows\\INF\\oem1.PNF)", "LOG " + Missing("oem1.PNF")});
    CHECK(m.Files(L"C:\\Windows\\INF") == WideTexts{L"C:\\Windows\\INF\\oem0.inf",
                                                    L"C:\\Windows\\INF\\oem0.PNF",
                                                    L"C:\\Windows\\INF\\usb.inf"});
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
}

TEST_CASE("Every OEM INF of the packet's goes, in listing order, and none of the others") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    for (const bool ours : {true, false, true, false}) {
        m.AddOemInf(Inf{.Ids = {ours ? Id : OtherId}});
    }
    m.SetListingOrder(L"C:\\Windows\\INF", {L"oem2.inf", L"oem0.inf"});
    CHECK(CleanInf(inf));
    CHECK(m.CallsOf("SetupUninstallOEMInfW") ==
          Lines{"SetupUninstallOEMInfW(oem2.inf, 0x1)", "SetupUninstallOEMInfW(oem0.inf, 0x1)"});
    CHECK(m.Log() == Lines{Missing("modem.inf"), Missing("modem.PNF"), Missing("oem2.inf"),
                           Missing("oem2.PNF"), Missing("oem0.inf"), Missing("oem0.PNF")});
}

TEST_CASE("Without any OEM INF in the store the delete list is dropped") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.WriteText(L"C:\\Windows\\INF\\modem.inf", L"stays");
    m.WriteText(L"C:\\Windows\\INF\\modem.PNF", L"stays");
    m.ForgetJournal();
    CHECK(CleanInf(inf));
    CHECK(m.Log() == Lines{});
    CHECK(m.Exists(L"C:\\Windows\\INF\\modem.inf"));
    CHECK(m.Exists(L"C:\\Windows\\INF\\modem.PNF"));
    CHECK(m.Story() == Lines{"FindFirstFileW(C:\\Windows\\INF\\OEM*.INF)"});
}

TEST_CASE("With an OEM INF of others the packet's own name in the store goes all the same") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.WriteText(L"C:\\Windows\\INF\\modem.inf", L"old");
    m.WriteText(L"C:\\Windows\\INF\\modem.PNF", L"old");
    m.AddOemInf(Inf{.Ids = {OtherId}});
    CHECK(CleanInf(inf));
    CHECK(m.Log() == Lines{Deleted("modem.inf"), Deleted("modem.PNF")});
    CHECK(m.CallsOf("SetupUninstallOEMInfW") == Lines{});
}

TEST_CASE("A store folder that is missing fails, with the system's reason") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.FailCall("FindFirstFileW", 1, ERROR_PATH_NOT_FOUND);
    CHECK_FALSE(CleanInf(inf));
    CHECK(m.Log() ==
          Lines{"CleanInf: Get file set from C:\\Windows\\INF\\ fail,error code 0x00000003"});
}

TEST_CASE("The store lies in the Windows folder of this machine") {
    Machine m;
    m.SetWindowsFolder(L"E:\\WINNT");
    const std::wstring inf = AddPacketInf(m);
    m.AddOemInf(Inf{.Ids = {Id}});
    CHECK(CleanInf(inf));
    CHECK_FALSE(m.Exists(L"E:\\WINNT\\INF\\oem0.inf"));
}

TEST_CASE("A packet INF that cannot be read fails before the store is looked at") {
    Machine m;
    CHECK_FALSE(CleanInf(L"D:\\Packet\\WIN7\\missing.inf"));
    CHECK_FALSE(CleanInf(L""));
    CHECK(m.CallsOf("FindFirstFileW") == Lines{});
}

TEST_CASE("An OEM INF that the parser rejects is skipped") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.WriteBytes(L"C:\\Windows\\INF\\oem0.inf", "this is no INF");
    m.AddOemInf(Inf{.Ids = {Id}}, L"oem1.inf");
    CHECK(CleanInf(inf));
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
    CHECK_FALSE(m.Exists(L"C:\\Windows\\INF\\oem1.inf"));
}

TEST_CASE(
    "An OEM INF that the parser refuses to size is skipped, unless its buffer was too small") {
    // Runs the cleaning with the parser's first answer about the OEM INF failing; 0: not failing.
    const auto uninstalls = [](DWORD error, int call) {
        Machine m;
        const std::wstring inf = AddPacketInf(m);
        m.AddOemInf(Inf{.Ids = {Id}});
        if (error != 0) {
            m.FailCall("SetupGetInfInformationW", call, error);
        }
        CHECK(CleanInf(inf));
        const Lines calls = m.CallsOf("SetupGetInfInformationW");
        const auto first =
            std::find(calls.begin(), calls.end(),
                      std::string("SetupGetInfInformationW(C:\\Windows\\INF\\oem0.inf, 2, 0)") +
                          (error == 0     ? ""
                           : error == 122 ? " -> fails 0x7A"
                                          : " -> fails 0x5"));
        REQUIRE(first != calls.end());
        const int number = static_cast<int>(first - calls.begin()) + 1;
        return std::pair(m.CallsOf("SetupUninstallOEMInfW").size(), number);
    };
    const int first = uninstalls(0, 0).second;
    CHECK(uninstalls(ERROR_INSUFFICIENT_BUFFER, first) == std::pair(std::size_t{1}, first));
    CHECK(uninstalls(ERROR_ACCESS_DENIED, first) == std::pair(std::size_t{0}, first));
}

TEST_CASE("An OEM INF whose models cannot be read ends the cleaning before anything is deleted") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.WriteText(L"C:\\Windows\\INF\\modem.inf", L"stays");
    m.AddOemInf(Inf{.Ids = {Id}});
    m.AddOemInf(Inf{.Ids = {Id}});
    // Two readings of the packet's INF, then the two of the first OEM INF: manufacturers, models.
    int opened = 0;
    {
        CHECK(CleanInf(m.AddInf(L"WIN7\\probe.inf", Inf{.Ids = {L"USB\\NOBODY"}})));
        for (const std::string& call : m.CallsOf("SetupOpenInfFileW")) {
            opened += call.find("probe.inf") != std::string::npos ? 1 : 0;
        }
        CHECK_FALSE(m.Exists(L"C:\\Windows\\INF\\probe.inf"));
    }
    REQUIRE(opened > 1);
    const int openedSoFar = static_cast<int>(m.CallsOf("SetupOpenInfFileW").size());
    m.ForgetJournal();
    // The last reading of the second OEM INF.
    m.FailCall("SetupOpenInfFileW", openedSoFar + 3 * opened, ERROR_ACCESS_DENIED);
    CHECK_FALSE(CleanInf(inf));
    CHECK(m.Log() == Lines{"GetInfSectionText: Open inf C:\\Windows\\INF\\oem1.inf fail,error code "
                           "0x00000005"});
    // The first one had been uninstalled by then; of the list nothing is deleted.
    CHECK(m.CallsOf("SetupUninstallOEMInfW") == Lines{"SetupUninstallOEMInfW(oem0.inf, 0x1)"});
    CHECK(m.CallsOf("DeleteFileW") == Lines{});
    CHECK(m.Exists(L"C:\\Windows\\INF\\modem.inf"));
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("An uninstall that fails is reported, and the files are deleted by force") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.AddOemInf(Inf{.Ids = {Id}});
    m.FailCall("SetupUninstallOEMInfW", 1, ERROR_ACCESS_DENIED);
    CHECK(CleanInf(inf));
    CHECK(m.Log() ==
          Lines{"CleanInf: Normal uninstall inf C:\\Windows\\INF\\oem0.inf fail, error code "
                "0x00000005,trying to force delete it",
                Missing("modem.inf"), Missing("modem.PNF"), Deleted("oem0.inf"),
                Deleted("oem0.PNF")});
}

TEST_CASE("A system without the uninstall function has the files deleted, without a line") {
    for (const char* function : {"GetModuleHandleW", "GetProcAddress"}) {
        CAPTURE(function);
        Machine m;
        const std::wstring inf = AddPacketInf(m);
        m.AddOemInf(Inf{.Ids = {Id}});
        m.FailCall(function, 1, ERROR_PROC_NOT_FOUND);
        CHECK(CleanInf(inf));
        CHECK(m.Log() == Lines{Missing("modem.inf"), Missing("modem.PNF"), Deleted("oem0.inf"),
                               Deleted("oem0.PNF")});
        CHECK(m.CallsOf("SetupUninstallOEMInfW") == Lines{});
    }
}

TEST_CASE("Files of the store that cannot be deleted are reported, and the cleaning goes on") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.AddOemInf(Inf{.Ids = {Id}});
    m.AddOemInf(Inf{.Ids = {Id}});
    m.LockFile(L"C:\\Windows\\INF\\oem0.inf");
    CHECK(CleanInf(inf));
    CHECK(m.Log() ==
          Lines{"CleanInf: Normal uninstall inf C:\\Windows\\INF\\oem0.inf fail, error code "
                "0x00000020,trying to force delete it",
                Missing("modem.inf"), Missing("modem.PNF"),
                "RemoveFile: Error in deleting file : C:\\Windows\\INF\\oem0.inf, error code "
                "0x00000020",
                Deleted("oem0.PNF"), Missing("oem1.inf"), Missing("oem1.PNF")});
}

TEST_CASE("The twin of an INF without an extension has its name and PNF behind it") {
    Machine m;
    m.WriteText(L"D:\\Packet\\WIN7\\noext", Inf{.Ids = {Id}}.Text());
    m.AddOemInf(Inf{.Ids = {OtherId}});
    CHECK(CleanInf(L"D:\\Packet\\WIN7\\noext"));
    CHECK(m.Log() == Lines{Missing("noext"), Missing("noext.PNF")});
}

TEST_CASE("Without a Windows folder there is no store, also not on the current drive") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.AddOemInf(Inf{.Ids = {Id}});
    m.FailCallsFrom("GetWindowsDirectoryW", 1, ERROR_ACCESS_DENIED);
    CHECK_FALSE(CleanInf(inf));
    CHECK(m.CallsOf("FindFirstFileW") == Lines{});
    REQUIRE(m.Log().size() == 1);
    CHECK(m.Log()[0].starts_with("CleanInf: Get file set from  fail,error code 0x"));
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
}

TEST_CASE("An OEM INF of the store without IDs, or an INF without any, matches nothing") {
    Machine m;
    m.AddOemInf(Inf{});
    CHECK(CleanInf(m.AddInf(L"WIN7\\empty.inf", Inf{})));
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
    CHECK(CleanInf(AddPacketInf(m)));
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
}

TEST_CASE("A folder named like an OEM INF is skipped") {
    Machine m;
    const std::wstring inf = AddPacketInf(m);
    m.MakeFolder(L"C:\\Windows\\INF\\oem0.inf");
    m.AddOemInf(Inf{.Ids = {Id}}, L"oem1.inf");
    CHECK(CleanInf(inf));
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
    CHECK_FALSE(m.Exists(L"C:\\Windows\\INF\\oem1.inf"));
}
