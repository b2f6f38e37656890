// The user's language and the texts of Lang.ini.
#include "machine/machine.h"
#include "support/doctest_support.h"

#include "ui/language.h"

using namespace machine;

namespace {

constexpr auto* AskRegistry =
    L"[USERLANG]\r\nLOCATION=3,HKEY_CURRENT_USER,%1,Language,,1,SOFTWARE\\Maker\r\n";

std::wstring TextOf(const std::wstring& language, const std::wstring& key) {
    LanguageText text{};
    text.fill(L'x');
    LoadLanguageText(language, key, text);
    return text.data();
}

} // namespace

TEST_CASE("Without a configured request there is no user language") {
    Machine m;
    m.WriteIni(L"[USERLANG]\r\n");
    std::wstring language = L"untouched";
    CHECK_FALSE(LoadLangConfig(language));
    CHECK(language == L"untouched");
    CHECK(m.Log() == Lines{"LoadLangConfig: No user language configuration found"});
}

TEST_CASE("The language is what the configured registry value holds") {
    Machine m;
    m.WriteIni(AskRegistry);
    m.SetRegistryText(L"HKEY_CURRENT_USER\\SOFTWARE\\Maker", L"Language", L"FR");
    std::wstring language;
    CHECK(LoadLangConfig(language));
    CHECK(language == L"FR");
    CHECK(m.Log() == Lines{});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("The language is English when the registry value is missing") {
    Machine m;
    m.WriteIni(AskRegistry);
    std::wstring language;
    CHECK(LoadLangConfig(language));
    CHECK(language == L"EN");
    CHECK(m.Log() ==
          Lines{"ExecuteSingleRegeditReq: Register operation fail, req "
                "3,HKEY_CURRENT_USER,SOFTWARE\\Maker,Language,,1,SOFTWARE\\Maker error code "
                "0x00000000"});
}

TEST_CASE("The language is English when the registry value is empty") {
    Machine m;
    m.WriteIni(AskRegistry);
    m.SetRegistryText(L"HKEY_CURRENT_USER\\SOFTWARE\\Maker", L"Language", L"");
    std::wstring language;
    CHECK(LoadLangConfig(language));
    CHECK(language == L"EN");
    CHECK(m.Log() == Lines{});
}

TEST_CASE("The language request is cut at 259 characters") {
    Machine m;
    // The name of the key goes beyond the buffer: what is asked for is another key, which is not
    // there.
    const std::wstring key = L"SOFTWARE\\" + std::wstring(240, L'k');
    m.WriteIni(L"[USERLANG]\r\nLOCATION=3,HKEY_CURRENT_USER,%1,Language,,1," + key + L"\r\n");
    m.SetRegistryText(L"HKEY_CURRENT_USER\\" + key, L"Language", L"FR");
    std::wstring language;
    CHECK(LoadLangConfig(language));
    CHECK(language == L"EN");
}

TEST_CASE("A text comes from the section of the language, whatever its case") {
    Machine m;
    m.WriteLang(L"[EN]\r\nSTR_INSTALL=Installing\r\n[ar]\r\nSTR_INSTALL=\x062A\x0645\r\n");
    CHECK(TextOf(L"EN", L"STR_INSTALL") == L"Installing");
    CHECK(TextOf(L"AR", L"STR_INSTALL") == L"\x062A\x0645");
    CHECK(TextOf(L"FR", L"STR_INSTALL") == L"");
    CHECK(TextOf(L"EN", L"STR_PREPARE") == L"");
}

TEST_CASE("A text is cut at 255 characters") {
    Machine m;
    m.WriteLang(L"[EN]\r\nSTR_INSTALL=" + std::wstring(254, L'a') + L"bcd\r\n");
    CHECK(TextOf(L"EN", L"STR_INSTALL") == std::wstring(254, L'a') + L"b");
}

TEST_CASE("Lang.ini lies beside the executable, wherever that is") {
    Machine m;
    m.SetExecutable(L"E:\\Other folder\\Setup.exe");
    m.WriteText(L"E:\\Other folder\\Lang.ini", L"[EN]\r\nSTR_INSTALL=Here\r\n");
    m.WriteText(L"D:\\Packet\\Lang.ini", L"[EN]\r\nSTR_INSTALL=There\r\n");
    CHECK(TextOf(L"EN", L"STR_INSTALL") == L"Here");
}
