#include "install/direct/inf_priority.h"

#include "install/engine.h"

#include <algorithm>

using namespace machine;

namespace {

std::wstring InPacket(const std::wstring& name) {
    return L"D:\\Packet\\WIN7\\" + name;
}

// The one-letter names of the INF files that could not be read, once for each reading.
std::string UnreadableInfs(const Machine& m) {
    const std::string before = "GetInfSectionText: Get inf D:\\Packet\\WIN7\\";
    std::string names;
    for (const std::string& line : m.Log()) {
        if (line.starts_with(before)) {
            names += line[before.size()];
        }
    }
    return names;
}

} // namespace

TEST_CASE("Packets are offered unknown classes first, then ports, modems and network adapters") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Class = L"Modem"});
    m.AddInf(L"WIN7\\b.inf", Inf{.Class = L"Ports"});
    m.AddInf(L"WIN7\\c.inf", Inf{.Class = L"Net"});
    m.AddInf(L"WIN7\\d.inf", Inf{.Class = L"Image"});
    m.AddInf(L"WIN7\\e.inf", Inf{.Class = L"media"});
    TextList order{L"what was there before"};
    CHECK(GetInfSetWithPriority(order));
    CHECK(order == TextList{InPacket(L"d.inf"), InPacket(L"b.inf"), InPacket(L"a.inf"),
                            InPacket(L"c.inf"), InPacket(L"e.inf")});
    CHECK(m.Log() == Lines{FolderLine});
    CheckTidy(m);
}

TEST_CASE("An INF without a class comes last") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Class = L""});
    m.AddInf(L"WIN7\\b.inf", Inf{.Class = L"Media"});
    m.AddInf(L"WIN7\\c.inf", Inf{.Class = L"Image"});
    TextList order;
    CHECK(GetInfSetWithPriority(order));
    CHECK(order == TextList{InPacket(L"c.inf"), InPacket(L"b.inf"), InPacket(L"a.inf")});
}

TEST_CASE("An INF that cannot be read stays in the list, at its end") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", L"this is no INF");
    m.AddInf(L"WIN7\\b.inf", Inf{.Class = L"Media"});
    TextList order;
    CHECK(GetInfSetWithPriority(order));
    CHECK(order == TextList{InPacket(L"b.inf"), InPacket(L"a.inf")});
    CheckTidy(m);
}

TEST_CASE("Every comparison reads both INF files anew") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", L"this is no INF");
    m.AddInf(L"WIN7\\b.inf", Inf{.Class = L"Media"});
    m.AddInf(L"WIN7\\c.inf", L"neither is this");
    TextList order;
    CHECK(GetInfSetWithPriority(order));
    CHECK(order == TextList{InPacket(L"b.inf"), InPacket(L"a.inf"), InPacket(L"c.inf")});
    // b with a; c with a, behind which it belongs.
    CHECK(UnreadableInfs(m) == "aca");
}

TEST_CASE("A single INF needs no comparison and is not read") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", L"this is no INF");
    TextList order;
    CHECK(GetInfSetWithPriority(order));
    CHECK(order == TextList{InPacket(L"a.inf")});
    CHECK(m.Log() == Lines{FolderLine});
}

TEST_CASE("An INF whose class changes between two readings keeps the list whole") {
    Machine m;
    for (int number = 0; number < 40; ++number) {
        m.AddInf(L"WIN7\\" + std::to_wstring(100 + number) + L".inf", Inf{.Class = L"Net"});
    }
    // From some reading on every INF but the first is of another class, or cannot be read at all.
    for (int reading = 1; reading < 60; reading += 7) {
        m.FailCall("SetupOpenInfFileW", reading, ERROR_SHARING_VIOLATION);
    }
    TextList order;
    CHECK(GetInfSetWithPriority(order));
    CHECK(order.size() == 40);
    std::sort(order.begin(), order.end());
    CHECK(std::unique(order.begin(), order.end()) == order.end());
}

TEST_CASE("INF files of one class stay in listing order") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Class = L"PORTS"});
    m.AddInf(L"WIN7\\b.inf", Inf{.Class = L"Ports"});
    m.AddInf(L"WIN7\\c.inf", Inf{.Class = L"Net"});
    m.SetListingOrder(L"D:\\Packet\\WIN7", {L"c.inf", L"b.inf", L"a.inf"});
    TextList order;
    CHECK(GetInfSetWithPriority(order));
    CHECK(order == TextList{InPacket(L"b.inf"), InPacket(L"a.inf"), InPacket(L"c.inf")});
}

TEST_CASE("A hundred INF files are sorted by class and keep their order within one") {
    Machine m;
    const TextList classes{L"Net", L"Modem", L"Ports", L"Image"};
    for (std::size_t number = 0; number < 100; ++number) {
        m.AddInf(L"WIN7\\" + std::to_wstring(100 + number) + L".inf",
                 Inf{.Class = classes[number % 4]});
    }
    TextList order;
    CHECK(GetInfSetWithPriority(order));
    REQUIRE(order.size() == 100);
    for (std::size_t place = 0; place < 100; ++place) {
        // The classes' last one ranks first, and every fourth INF has it.
        const std::size_t number = 3 - place / 25 + 4 * (place % 25);
        CHECK(order[place] == InPacket(std::to_wstring(100 + number) + L".inf"));
    }
    CheckTidy(m);
}

TEST_CASE("A packet without INF files has no order") {
    Machine m;
    m.WriteText(L"D:\\Packet\\WIN7\\readme.txt", L"no INF");
    TextList order{L"what was there before"};
    CHECK_FALSE(GetInfSetWithPriority(order));
    CHECK(order == TextList{});
    CHECK(m.Log() == Lines{FolderLine, "GetInfSetWithPriority: Get driver packet "
                                       "D:\\Packet\\WIN7\\ inf set fail,error code 0x00000002"});
}

TEST_CASE("A missing packet folder has no order") {
    Machine m;
    TextList order;
    CHECK_FALSE(GetInfSetWithPriority(order));
    CHECK(m.Log() == Lines{FolderLine, "GetInfSetWithPriority: Get driver packet "
                                       "D:\\Packet\\WIN7\\ inf set fail,error code 0x00000003"});
}
