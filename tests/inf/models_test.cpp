// Which hardware IDs an INF serves, by which install sections, and which INF serves an ID.
#include "inf/models.h"
#include "inf/packet_ids.h"

#include "inf/inf_files.h"
#include "support/doctest_support.h"

using namespace machine;

namespace {

const std::wstring Id1 = L"USB\\VID_3A9D&PID_9001";
const std::wstring Id2 = L"USB\\VID_3A9D&PID_9003";

// The sections read for the models of an INF with this manufacturer line.
Lines ModelsSectionsSought(const std::wstring& manufacturers,
                           WORD architecture = PROCESSOR_ARCHITECTURE_AMD64) {
    Machine m;
    m.SetArchitecture(architecture);
    const std::wstring path = AddSections(m, L"[Manufacturer]\r\n" + manufacturers +
                                                 L"\r\n[Strings]\r\nMfg=\"Maker\"\r\n");
    InfLineList lines;
    CHECK(GetInfModelsText(path, lines));
    return SectionsSought(m);
}

TextList IdsOf(const std::wstring& modelsLines) {
    Machine m;
    const std::wstring path =
        AddSections(m, L"[Manufacturer]\r\nMaker=Models\r\n[Models]\r\n" + modelsLines);
    DeviceIdList ids{L"old"};
    CHECK(GetDeviceIDFromInf(path, ids));
    CHECK(m.Log() == Lines{});
    return ids;
}

TextList InstallSectionsOf(const std::wstring& modelsLines) {
    Machine m;
    const std::wstring path =
        AddSections(m, L"[Manufacturer]\r\nMaker=Models\r\n[Models]\r\n" + modelsLines);
    TextList sections{L"old"};
    CHECK(GetInstallSectionsFromInf(path, sections));
    return sections;
}

} // namespace

TEST_CASE("The machine's architecture decides which decorations apply") {
    Machine m;
    CHECK(MatchPlatformDecoration(L"NTamd64"));
    CHECK_FALSE(MatchPlatformDecoration(L"NTx86"));
    CHECK_FALSE(MatchPlatformDecoration(L"NTia64"));
    CHECK(MatchPlatformDecoration(L"NT"));
    CHECK(MatchPlatformDecoration(L""));
    CHECK_FALSE(MatchPlatformDecoration(L"NTamd64.6.1"));
    m.SetArchitecture(PROCESSOR_ARCHITECTURE_INTEL);
    CHECK(MatchPlatformDecoration(L"NTx86"));
    CHECK_FALSE(MatchPlatformDecoration(L"NTamd64"));
    m.SetArchitecture(PROCESSOR_ARCHITECTURE_IA64);
    CHECK(MatchPlatformDecoration(L"NTia64"));
    CHECK_FALSE(MatchPlatformDecoration(L"NTamd64"));
    m.SetArchitecture(PROCESSOR_ARCHITECTURE_ARM);
    CHECK(MatchPlatformDecoration(L"NTx86"));
}

TEST_CASE("On x64 the undecorated models section and the one for x64 are read") {
    CHECK(ModelsSectionsSought(L"%Mfg% = Models, NTamd64, NTx86") ==
          Lines{"Manufacturer", "Models", "Models.NTamd64"});
}

TEST_CASE("On x86 the models section for x86 is read") {
    CHECK(ModelsSectionsSought(L"%Mfg% = Models, NTamd64, NTx86", PROCESSOR_ARCHITECTURE_INTEL) ==
          Lines{"Manufacturer", "Models", "Models.NTx86"});
}

TEST_CASE("A models section for a Windows version is never read") {
    CHECK(ModelsSectionsSought(L"%Mfg% = Models, NTamd64.6.1") == Lines{"Manufacturer", "Models"});
}

TEST_CASE("A decoration is accepted in any case and kept as it is written") {
    CHECK(ModelsSectionsSought(L"%Mfg% = Models, ntamd64") ==
          Lines{"Manufacturer", "Models", "Models.ntamd64"});
}

TEST_CASE("An empty decoration asks for the section with a final dot") {
    CHECK(ModelsSectionsSought(L"%Mfg% = Models,, NTamd64") ==
          Lines{"Manufacturer", "Models", "Models.", "Models.NTamd64"});
}

TEST_CASE("A decoration that is named twice is read twice") {
    CHECK(ModelsSectionsSought(L"%Mfg% = Models, NT, NT") ==
          Lines{"Manufacturer", "Models", "Models.NT", "Models.NT"});
}

TEST_CASE("Every manufacturer's models are read, in the file's order") {
    CHECK(ModelsSectionsSought(L"A = ModelsA, NTamd64\r\nB = ModelsB") ==
          Lines{"Manufacturer", "ModelsA", "ModelsA.NTamd64", "ModelsB"});
}

TEST_CASE("A manufacturer line without a key names its models section all the same") {
    CHECK(ModelsSectionsSought(L"Models") == Lines{"Manufacturer", "Models"});
}

TEST_CASE("Names of models sections are cut to 259 characters") {
    const std::string name(250, 'm');
    CHECK(ModelsSectionsSought(L"%Mfg% = " + std::wstring(250, L'm') + L", NTamd64, NT") ==
          Lines{"Manufacturer", name, name + ".NTamd64", name + ".NT"});
    CHECK(ModelsSectionsSought(L"%Mfg% = " + std::wstring(255, L'm') + L", NTamd64") ==
          Lines{"Manufacturer", std::string(255, 'm'), std::string(255, 'm') + ".NTa"});
}

TEST_CASE("Models lines come section after section") {
    Machine m;
    const std::wstring path = AddSections(
        m, L"[Manufacturer]\r\nA=M,NTamd64\r\nB=N\r\n[N]\r\nd4=I4,ID4\r\n[M.NTamd64]\r\n"
           L"d2=I2,ID2\r\nd3=I3,ID3\r\n[M]\r\nd1=I1,ID1\r\n");
    InfLineList lines{{L"old", {}}};
    CHECK(GetInfModelsText(path, lines));
    REQUIRE(lines.size() == 4);
    CHECK(lines[0].Fields == TextList{L"d1", L"I1", L"ID1"});
    CHECK(lines[1].Fields == TextList{L"d2", L"I2", L"ID2"});
    CHECK(lines[2].Fields == TextList{L"d3", L"I3", L"ID3"});
    CHECK(lines[3].Fields == TextList{L"d4", L"I4", L"ID4"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("An INF without a Manufacturer section lists nothing, which is no failure") {
    Machine m;
    const std::wstring path = AddSections(m, L"[Models]\r\nd=Install,ID\r\n");
    InfLineList lines;
    CHECK(GetInfModelsText(path, lines));
    CHECK(lines.empty());
    DeviceIdList ids;
    CHECK(GetDeviceIDFromInf(path, ids));
    TextList sections;
    CHECK(GetInstallSectionsFromInf(path, sections));
    CHECK(ids.empty());
    CHECK(sections.empty());
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A models section that does not exist contributes nothing") {
    Machine m;
    const std::wstring path =
        AddSections(m, L"[Manufacturer]\r\nA=None\r\nB=M\r\n[M]\r\nd=I,ID\r\n");
    DeviceIdList ids;
    CHECK(GetDeviceIDFromInf(path, ids));
    CHECK(ids == TextList{L"ID"});
}

TEST_CASE("An empty path is refused everywhere and the lists stay") {
    const Machine m;
    InfLineList lines{{L"old", {}}};
    TextList sections{L"old"};
    DeviceIdList ids{L"old"};
    CHECK_FALSE(GetInfModelsText(L"", lines));
    CHECK_FALSE(GetInstallSectionsFromInf(L"", sections));
    CHECK_FALSE(GetDeviceIDFromInf(L"", ids));
    CHECK(lines.size() == 1);
    CHECK(sections == TextList{L"old"});
    CHECK(ids == TextList{L"old"});
    CHECK(m.Journal() == Lines{});
}

TEST_CASE("An INF that cannot be read gives false and empty lists") {
    const Machine m;
    InfLineList lines{{L"old", {}}};
    TextList sections{L"old"};
    DeviceIdList ids{L"old"};
    CHECK_FALSE(GetInfModelsText(InfPath, lines));
    CHECK_FALSE(GetInstallSectionsFromInf(InfPath, sections));
    CHECK_FALSE(GetDeviceIDFromInf(InfPath, ids));
    CHECK(lines.empty());
    CHECK(sections.empty());
    CHECK(ids.empty());
}

TEST_CASE("A models section that cannot be read gives false, with the lines before it") {
    Machine m;
    const std::wstring path =
        AddSections(m, L"[Manufacturer]\r\nA=M\r\nB=N\r\n[M]\r\nd1=I1,ID1\r\n[N]\r\nd2=I2,ID2\r\n");
    m.FailCall("SetupOpenInfFileW", 3, ERROR_ACCESS_DENIED);
    InfLineList lines;
    CHECK_FALSE(GetInfModelsText(path, lines));
    CHECK(lines.size() == 1);
    CHECK(m.Log() ==
          Lines{"GetInfSectionText: Open inf D:\\Packet\\WIN7\\a.inf fail,error code 0x00000005"});
}

TEST_CASE("Install sections are distinct, case ignored, in the first spelling and order") {
    CHECK(InstallSectionsOf(L"a=Second,ID1\r\nb=first,ID2\r\nc=SECOND,ID3\r\nd=First,ID4\r\n") ==
          TextList{L"Second", L"first"});
}

TEST_CASE("IDs that differ in case only are one entry, spelled as the first") {
    CHECK(IdsOf(L"a=I,USB\\VID_3A9D&PID_9001\r\nb=I,usb\\vid_3a9d&pid_9001\r\n") == TextList{Id1});
}

TEST_CASE("IDs that differ in a letter beyond ASCII are two entries, also in case only") {
    CHECK(IdsOf(L"a=I,USB\\\x00C4\r\nb=I,USB\\\x00E4\r\nc=I,usb\\\x00E4\r\n") ==
          TextList{L"USB\\\x00C4", L"USB\\\x00E4"});
}

TEST_CASE("Compatible IDs count, descriptions and install sections do not") {
    CHECK(IdsOf(L"Description=Install,ID1,COMPAT1,COMPAT2\r\nOther=Install,ID2,compat1\r\n") ==
          TextList{L"ID1", L"COMPAT1", L"COMPAT2", L"ID2"});
}

TEST_CASE("A models line without an ID lists none") {
    CHECK(IdsOf(L"a=Install\r\nb=Install,ID\r\n") == TextList{L"ID"});
    CHECK(IdsOf(L"alone\r\n") == TextList{});
    CHECK(InstallSectionsOf(L"alone\r\n") == TextList{L"alone"});
    CHECK(InstallSectionsOf(L"a=\r\n") == TextList{L""});
}

TEST_CASE("IDs of 199, 200 and 400 characters are listed as they stand") {
    for (const std::size_t length : {199U, 200U, 400U}) {
        const std::wstring id(length, L'I');
        CHECK(IdsOf(L"a=Install," + id + L"\r\n") == TextList{id});
    }
}

TEST_CASE("A models line without an install section ends the process, with no log line") {
    Machine m;
    const std::wstring path =
        AddSections(m, L"[Manufacturer]\r\nMaker=Models\r\n[Models]\r\nd=Install\r\n");
    TextList sections;
    REQUIRE(GetInstallSectionsFromInf(path, sections));
    const int calls = static_cast<int>(m.CallsOf("SetupGetStringFieldW").size());
    m.FailCall("SetupGetStringFieldW",
               calls + LastCall(m, "SetupGetStringFieldW", "SetupGetStringFieldW(1, null, 0)"),
               ERROR_INVALID_PARAMETER);
    DWORD status = 0;
    try {
        GetInstallSectionsFromInf(path, sections);
    } catch (const ProcessEnded& end) {
        status = end.Status;
    }
    CHECK(status == 0xC0000417);
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A models line without any value lists no ID") {
    Machine m;
    const std::wstring path =
        AddSections(m, L"[Manufacturer]\r\nMaker=Models\r\n[Models]\r\nd=Install\r\n");
    m.FailCall("SetupGetFieldCount", 2, ERROR_INVALID_PARAMETER);
    DeviceIdList ids;
    CHECK(GetDeviceIDFromInf(path, ids));
    CHECK(ids.empty());
}

TEST_CASE("The packet's INF that lists an ID is found, the ID's case ignored") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id1}});
    const std::wstring b = m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {Id2}});
    std::wstring path;
    CHECK(GetDeviceIDInDriverPacket(L"usb\\vid_3a9d&pid_9003", path));
    CHECK(path == b);
    CHECK(m.Log() == Lines{"GetDriverDir: Get system WIN7\tbit 64"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("Of two INFs that list an ID the first of the listing is taken") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id1}});
    const std::wstring b = m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {Id1}});
    m.SetListingOrder(L"D:\\Packet\\WIN7", {L"b.inf", L"a.inf"});
    std::wstring path;
    CHECK(GetDeviceIDInDriverPacket(Id1, path));
    CHECK(path == b);
}

TEST_CASE("An ID that no INF lists is not found, which is not logged") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id1}});
    std::wstring path;
    CHECK_FALSE(GetDeviceIDInDriverPacket(Id2, path));
    CHECK_FALSE(GetDeviceIDInDriverPacket(L"", path));
    CHECK(path.empty());
    CHECK(m.Log() == Lines(2, "GetDriverDir: Get system WIN7\tbit 64"));
}

TEST_CASE("A path that is given is never cleared, and counts as found") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id1}});
    std::wstring path = L"old";
    CHECK(GetDeviceIDInDriverPacket(Id2, path));
    CHECK(path == L"old");
}

TEST_CASE("An unreadable INF makes the search fail, although a later INF lists the ID") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\WIN7\\a.inf", "");
    m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {Id1}});
    m.FailCall("SetupGetInfInformationW", 1, ERROR_WRONG_INF_STYLE);
    std::wstring path;
    CHECK_FALSE(GetDeviceIDInDriverPacket(Id1, path));
    CHECK(path.empty());
    CHECK(m.Log() ==
          Lines{"GetDriverDir: Get system WIN7\tbit 64",
                "GetInfSectionText: Get inf D:\\Packet\\WIN7\\a.inf information fail,error code "
                "0xE0000100",
                "GetDeviceIDInDriverPacket: Get device id from inf D:\\Packet\\WIN7\\a.inf "
                "fail,error code 0xE0000100"});
}

TEST_CASE("Without the packet's folder the search fails with the folder and the error") {
    const Machine m;
    std::wstring path;
    CHECK_FALSE(GetDeviceIDInDriverPacket(Id1, path));
    CHECK(m.Log() ==
          Lines{"GetDriverDir: Get system WIN7\tbit 64",
                "GetDeviceIDInDriverPacket: Get driver packet D:\\Packet\\WIN7\\ inf set "
                "fail,error code 0x00000003"});
}

TEST_CASE("In a packet without INFs the search fails") {
    Machine m;
    m.WriteText(L"D:\\Packet\\WIN7\\readme.txt", L"");
    std::wstring path;
    CHECK_FALSE(GetDeviceIDInDriverPacket(Id1, path));
    CHECK(m.Log() ==
          Lines{"GetDriverDir: Get system WIN7\tbit 64",
                "GetDeviceIDInDriverPacket: Get driver packet D:\\Packet\\WIN7\\ inf set "
                "fail,error code 0x00000002"});
}

TEST_CASE("In a packet of 100 INFs the ID of the last one is found") {
    Machine m;
    std::wstring last;
    for (int number = 100; number < 200; ++number) {
        const std::wstring digits = std::to_wstring(number);
        last = m.AddInf(L"WIN7\\m" + digits + L".inf", Inf{.Ids = {L"USB\\VID_" + digits}});
    }
    std::wstring path;
    CHECK(GetDeviceIDInDriverPacket(L"USB\\VID_199", path));
    CHECK(path == last);
    CHECK(m.LeakSummary() == "");
}
