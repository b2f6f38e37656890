// The serial-port services: which are stopped and renamed, and with which number.
#include "machine/machine.h"
#include "support/doctest_support.h"
#include "system/serial_services.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

using namespace machine;

namespace {

const std::wstring Marker = L"Omdrel USB Device for Legacy Serial Communication Pexil9s";

std::wstring NameOf(int position) {
    return L"service" + std::to_wstring(position);
}

// `count` driver services; those at `marked` carry the marker.
void AddServices(Machine& m, int count, const std::vector<int>& marked) {
    for (int position = 0; position < count; ++position) {
        m.AddService({.Name = NameOf(position), .DisplayName = L"Other " + NameOf(position)});
    }
    for (const int position : marked) {
        m.ServiceAt(NameOf(position)).DisplayName = L"Serial: " + Marker + L" of a maker";
    }
}

std::wstring Numbered(int number) {
    return Marker + L" " + std::to_wstring(number);
}

// Collects what is written to the standard output while it lives.
class OutputCapture {
public:
    OutputCapture() {
        std::fflush(stdout);
        saved_ = _dup(1);
        std::array<wchar_t, MAX_PATH> folder{};
        GetTempPathW(MAX_PATH, folder.data());
        path_ =
            folder.data() + std::wstring(L"setup-output-") + std::to_wstring(GetCurrentProcessId());
        const int file = _wopen(path_.c_str(), _O_CREAT | _O_TRUNC | _O_RDWR | _O_BINARY, 0600);
        _dup2(file, 1);
        _close(file);
    }
    ~OutputCapture() { Text(); }
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;

    // Ends the capture; lines end in "\n", whatever the standard output makes of them.
    std::string Text() {
        if (saved_ < 0) {
            return text_;
        }
        std::fflush(stdout);
        _dup2(saved_, 1);
        _close(saved_);
        saved_ = -1;
        if (FILE* file = _wfopen(path_.c_str(), L"rb"); file != nullptr) {
            for (int character = std::fgetc(file); character != EOF; character = std::fgetc(file)) {
                if (character != '\r') {
                    text_ += static_cast<char>(character);
                }
            }
            std::fclose(file);
        }
        DeleteFileW(path_.c_str());
        return text_;
    }

private:
    int saved_ = -1;
    std::wstring path_;
    std::string text_;
};

// Adjusts the services; what that prints is kept out of the test's own output.
std::uint32_t Adjust() {
    const OutputCapture output;
    return AdjustSerialServices();
}

} // namespace

TEST_CASE("Services at positions 4 and 9 get display names that end in 4 and 9") {
    Machine m;
    AddServices(m, 12, {4, 9});
    CHECK(Adjust() == 0);
    for (int position = 0; position < 12; ++position) {
        CAPTURE(position);
        CHECK(m.ServiceAt(NameOf(position)).DisplayName ==
              (position == 4 || position == 9 ? Numbered(position) : L"Other " + NameOf(position)));
    }
    CHECK(m.Log() == Lines{});
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
}

TEST_CASE("The adjustment of one service tells this whole story") {
    Machine m;
    m.AddService({.Name = L"omser", .DisplayName = Marker, .Running = true});
    CHECK(Adjust() == 0);
    const Lines story = m.Story();
    REQUIRE(story.size() == 8);
    CHECK(story[0] == "OpenSCManagerW(null, ServicesActive, 0xF003F)");
    CHECK(story[1] == "EnumServicesStatusW(manager1, 0xB, 3, 0)");
    CHECK(story[2].rfind("EnumServicesStatusW(manager1, 0xB, 3, ", 0) == 0);
    CHECK(story[2] != story[1]);
    CHECK(story[3] == "OpenServiceW(manager1, omser, 0x10000000)");
    CHECK(story[4] == "QueryServiceConfigW(service1, 0)");
    CHECK(story[5].rfind("QueryServiceConfigW(service1, ", 0) == 0);
    CHECK(story[6] == "ControlService(service1, 1)");
    CHECK(story[7] == "ChangeServiceConfigW(service1, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, null, "
                      "Omdrel USB Device for Legacy Serial Communication Pexil9s 0)");
    CHECK_FALSE(m.ServiceAt(L"omser").Running);
}

TEST_CASE("A service that already has a number gets that of its present position") {
    Machine m;
    AddServices(m, 3, {});
    m.ServiceAt(NameOf(1)).DisplayName = Numbered(4);
    CHECK(Adjust() == 0);
    CHECK(m.ServiceAt(NameOf(1)).DisplayName == Numbered(1));
}

TEST_CASE("The marker is searched case-sensitively") {
    Machine m;
    m.AddService({.Name = L"s",
                  .DisplayName = L"omdrel usb device for legacy serial communication pexil9s"});
    CHECK(Adjust() == 0);
    CHECK(m.CallsOf("ControlService") == Lines{});
    CHECK(m.CallsOf("ChangeServiceConfigW") == Lines{});
}

TEST_CASE("A service that cannot be stopped is renamed all the same") {
    Machine m;
    m.AddService({.Name = L"s",
                  .DisplayName = Marker,
                  .Running = true,
                  .StopError = ERROR_SERVICE_CANNOT_ACCEPT_CTRL});
    CHECK(Adjust() == 0);
    CHECK(m.ServiceAt(L"s").DisplayName == Numbered(0));
    CHECK(m.ServiceAt(L"s").Running);
}

TEST_CASE("Services that are no drivers are left alone") {
    Machine m;
    m.AddService({.Name = L"s", .DisplayName = Marker, .Type = SERVICE_WIN32_OWN_PROCESS});
    CHECK(Adjust() == 0);
    CHECK(m.ServiceAt(L"s").DisplayName == Marker);
}

TEST_CASE("Without access to the service manager the result is 0xFFFFFFFF, without a line") {
    Machine m;
    AddServices(m, 2, {0});
    m.FailCall("OpenSCManagerW", 1, ERROR_ACCESS_DENIED);
    CHECK(Adjust() == 0xFFFFFFFF);
    CHECK(m.CallsOf("EnumServicesStatusW") == Lines{});
    CHECK(m.Log() == Lines{});
}

TEST_CASE("A list that cannot be read leaves all services alone, with the result 0") {
    for (int k = 1; k <= 2; ++k) {
        CAPTURE(k);
        Machine m;
        AddServices(m, 2, {0, 1});
        m.FailCall("EnumServicesStatusW", k, ERROR_ACCESS_DENIED);
        CHECK(Adjust() == 0);
        CHECK(m.CallsOf("EnumServicesStatusW").size() == static_cast<std::size_t>(k));
        CHECK(m.CallsOf("OpenServiceW") == Lines{});
        CHECK(m.LeakSummary() == "");
    }
}

TEST_CASE("A machine without driver services needs no second look") {
    Machine m;
    CHECK(Adjust() == 0);
    CHECK(m.CallsOf("EnumServicesStatusW").size() == 1);
}

TEST_CASE("The listing begins at the first service, wherever the question for its size stopped") {
    Machine m;
    AddServices(m, 3, {1});
    m.SizeQueryMovesOn();
    CHECK(AdjustSerialServices() == 0);
    CHECK(m.ServiceAt(NameOf(1)).DisplayName == Numbered(1));
}

TEST_CASE("A list that grows between the two looks leaves all services alone") {
    Machine m;
    AddServices(m, 2, {0});
    m.AfterCall("EnumServicesStatusW", 1,
                [&m] { m.AddService({.Name = L"new", .DisplayName = std::wstring(500, L'n')}); });
    CHECK(Adjust() == 0);
    CHECK(m.CallsOf("EnumServicesStatusW").size() == 2);
    CHECK(m.CallsOf("OpenServiceW") == Lines{});
}

TEST_CASE("A list that shrinks between the two looks is walked as it is then") {
    Machine m;
    AddServices(m, 4, {0, 3});
    m.AfterCall("EnumServicesStatusW", 1,
                [&m] { m.ServiceAt(NameOf(1)).Type = SERVICE_WIN32_OWN_PROCESS; });
    CHECK(Adjust() == 0);
    CHECK(m.CallsOf("OpenServiceW").size() == 3);
    CHECK(m.ServiceAt(NameOf(3)).DisplayName == Numbered(2));
}

TEST_CASE("A service that cannot be opened for good uses up all attempts") {
    Machine m;
    AddServices(m, 5, {1, 3});
    m.ServiceAt(NameOf(2)).OpenError = ERROR_ACCESS_DENIED;
    CHECK(Adjust() == 0);
    CHECK(m.CallsOf("OpenServiceW") == Lines{"OpenServiceW(manager1, service0, 0x10000000)",
                                             "OpenServiceW(manager1, service1, 0x10000000)",
                                             "OpenServiceW(manager1, service2, 0x10000000)",
                                             "OpenServiceW(manager1, service2, 0x10000000)",
                                             "OpenServiceW(manager1, service2, 0x10000000)"});
    CHECK(m.ServiceAt(NameOf(1)).DisplayName == Numbered(1));
    CHECK(m.ServiceAt(NameOf(3)).DisplayName != Numbered(3));
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A step that fails once shifts the numbers, and the last record is not reached") {
    struct Step {
        const char* Function;
        int Call;
    };
    // The third record's turn: two configuration queries each, marked ones are also changed.
    for (const Step& step : {Step{"OpenServiceW", 3}, Step{"QueryServiceConfigW", 5},
                             Step{"QueryServiceConfigW", 6}, Step{"ChangeServiceConfigW", 1}}) {
        CAPTURE(step.Function);
        CAPTURE(step.Call);
        Machine m;
        AddServices(m, 5, {2, 3, 4});
        m.FailCall(step.Function, step.Call, ERROR_ACCESS_DENIED);
        CHECK(Adjust() == 0);
        CHECK(m.ServiceAt(NameOf(2)).DisplayName == Numbered(3));
        CHECK(m.ServiceAt(NameOf(3)).DisplayName == Numbered(4));
        CHECK(m.ServiceAt(NameOf(4)).DisplayName == L"Serial: " + Marker + L" of a maker");
        CHECK(m.LeakSummary() == "");
    }
}

TEST_CASE("A size query that fails with another error is a failed attempt") {
    Machine m;
    AddServices(m, 2, {0});
    m.ServiceAt(NameOf(0)).QueryError = ERROR_ACCESS_DENIED;
    CHECK(Adjust() == 0);
    CHECK(m.CallsOf("QueryServiceConfigW") ==
          Lines{"QueryServiceConfigW(service1, 0)", "QueryServiceConfigW(service2, 0)"});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A display name that another service has is a failed attempt with each number") {
    Machine m;
    AddServices(m, 3, {0});
    m.ServiceAt(NameOf(2)).DisplayName = Numbered(0);
    CHECK(Adjust() == 0);
    // The first number was taken, the second was free; then the second record, not the third.
    CHECK(m.ServiceAt(NameOf(0)).DisplayName == Numbered(1));
    CHECK(m.ServiceAt(NameOf(2)).DisplayName == Numbered(0));
}

TEST_CASE("A thousand services that refuse leave no handle open") {
    Machine m;
    AddServices(m, 1000, {0});
    m.ServiceAt(NameOf(0)).ChangeError = ERROR_ACCESS_DENIED;
    CHECK(Adjust() == 0);
    CHECK(m.CallsOf("ChangeServiceConfigW").size() == 1000);
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("The walk itself always results in 1") {
    Machine m;
    CHECK(RenameSerialServices(nullptr, nullptr, 0) == 1);
    m.FailCallsFrom("OpenServiceW", 1, ERROR_ACCESS_DENIED);
    ENUM_SERVICE_STATUSW record{};
    std::wstring name = L"s";
    record.lpServiceName = name.data();
    CHECK(RenameSerialServices(nullptr, &record, 1) == 1);
}

TEST_CASE("The standard output shows each service of the maker's as text") {
    Machine m;
    AddServices(m, 2, {1});
    m.ServiceAt(NameOf(1)).BinaryPath = L"\\SystemRoot\\System32\\drivers\\omser.sys";
    m.ServiceAt(NameOf(1)).StartName = L"\\Driver\\omser";
    OutputCapture output;
    CHECK(AdjustSerialServices() == 0);
    CHECK(output.Text() ==
          "---------------------------------------\n"
          "DisplayName: Serial: Omdrel USB Device for Legacy Serial Communication Pexil9s of a "
          "maker\n"
          "BinaryPathName: \\SystemRoot\\System32\\drivers\\omser.sys\n"
          "ServiceStartName: \\Driver\\omser\n"
          "got it\n");
}

TEST_CASE("Names beyond ASCII are shown whole, in UTF-8") {
    Machine m;
    m.AddService(
        {.Name = L"s",
         .DisplayName = L"\u0421\u0435\u0440\u0438\u044F \u4E32\u53E3 " + Marker + L" \u00DF",
         .BinaryPath = L"C:\\Ger\u00E4te\\\u00F6m.sys"});
    OutputCapture output;
    CHECK(AdjustSerialServices() == 0);
    CHECK(output.Text() ==
          "---------------------------------------\n"
          "DisplayName: \xD0\xA1\xD0\xB5\xD1\x80\xD0\xB8\xD1\x8F \xE4\xB8\xB2\xE5\x8F\xA3 Omdrel "
          "USB Device for Legacy Serial Communication Pexil9s \xC3\x9F\n"
          "BinaryPathName: C:\\Ger\xC3\xA4te\\\xC3\xB6m.sys\n"
          "ServiceStartName: \n"
          "got it\n");
}

TEST_CASE("A service without a path or a start name shows that it has none") {
    Machine m;
    m.AddService({.Name = L"s", .DisplayName = Marker});
    m.ServiceAt(L"s").NoTexts = true;
    OutputCapture output;
    CHECK(AdjustSerialServices() == 0);
    CHECK(output.Text() ==
          "---------------------------------------\n"
          "DisplayName: Omdrel USB Device for Legacy Serial Communication Pexil9s\n"
          "BinaryPathName: (null)\n"
          "ServiceStartName: (null)\n"
          "got it\n");
}

TEST_CASE("A service that cannot be renamed is shown at each attempt") {
    Machine m;
    AddServices(m, 2, {0});
    m.ServiceAt(NameOf(0)).ChangeError = ERROR_ACCESS_DENIED;
    OutputCapture output;
    CHECK(AdjustSerialServices() == 0);
    const std::string text = output.Text();
    CHECK(text.find("got it\n") != text.rfind("got it\n"));
}

TEST_CASE("Whatever call of an adjustment fails, it ends and leaves nothing open") {
    for (const DWORD error : {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_MORE_DATA}}) {
        int k = 0;
        std::string failed;
        do {
            Machine m;
            AddServices(m, 4, {1, 2});
            m.FailAnyCall(++k, error);
            const std::uint32_t result = Adjust();
            failed = m.FailedCall();
            CAPTURE(k);
            CHECK((result == 0xFFFFFFFF) == (failed == "OpenSCManagerW"));
            CHECK(m.CallsOf("OpenServiceW").size() <= 4);
            CHECK(m.LeakSummary() == "");
            CHECK(m.Misuses() == Lines{});
        } while (!failed.empty());
        CHECK(k > 15);
    }
}
