// The Lang.ini that ships: read as the program reads it, by the system's own profile functions.
#include "machine/machine.h"
#include "support/doctest_support.h"

#include "ui/language.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

using namespace machine;

namespace {

constexpr std::array<const wchar_t*, 7> Keys{
    L"STR_PREPARE",      L"STR_INSTALL",           L"STR_UNINSTALL",     L"STR_INSTALL_SUCCESS",
    L"STR_INSTALL_FAIL", L"STR_UNINSTALL_SUCCESS", L"STR_UNINSTALL_FAIL"};

struct Language {
    const wchar_t* Code;
    // In the order of Keys.
    std::array<const wchar_t*, Keys.size()> Texts;
};

constexpr std::array<Language, 8> Languages{{
    {L"EN",
     {L"Preparing, please wait...", L"Installing the device drivers...",
      L"Removing the device drivers...", L"The device drivers are installed.",
      L"The installation failed.", L"The device drivers were removed.", L"The removal failed."}},
    {L"AR",
     // Without a final dot: in a left-to-right control it would stand at the wrong end.
     {L"جارٍ التحضير، يرجى الانتظار", L"جارٍ تثبيت برامج تشغيل الجهاز",
      L"جارٍ إزالة برامج تشغيل الجهاز", L"تم تثبيت برامج تشغيل الجهاز", L"فشل التثبيت",
      L"تمت إزالة برامج تشغيل الجهاز", L"فشلت الإزالة"}},
    {L"ZH",
     {L"正在准备，请稍候...", L"正在安装设备驱动程序...", L"正在卸载设备驱动程序...",
      L"设备驱动程序已安装。", L"安装失败。", L"设备驱动程序已卸载。", L"卸载失败。"}},
    {L"FR",
     {L"Préparation, veuillez patienter...", L"Installation des pilotes en cours...",
      L"Suppression des pilotes en cours...", L"Les pilotes sont installés.",
      L"L'installation a échoué.", L"Les pilotes ont été supprimés.", L"La suppression a échoué."}},
    {L"DE",
     {L"Vorbereitung läuft, bitte warten...", L"Gerätetreiber werden installiert...",
      L"Gerätetreiber werden entfernt...", L"Die Gerätetreiber sind installiert.",
      L"Die Installation ist fehlgeschlagen.", L"Die Gerätetreiber wurden entfernt.",
      L"Das Entfernen ist fehlgeschlagen."}},
    {L"ES",
     {L"Preparando, espere por favor...", L"Instalando los controladores...",
      L"Desinstalando los controladores...", L"Los controladores se han instalado.",
      L"La instalación ha fallado.", L"Los controladores se han desinstalado.",
      L"La desinstalación ha fallado."}},
    {L"PT",
     {L"Preparação em curso, aguarde...", L"Instalação dos drivers em curso...",
      L"Remoção dos drivers em curso...", L"Os drivers foram instalados.", L"A instalação falhou.",
      L"Os drivers foram removidos.", L"A remoção falhou."}},
    {L"RU",
     {L"Подготовка, подождите...", L"Установка драйверов устройства...",
      L"Удаление драйверов устройства...", L"Драйверы устройства установлены.",
      L"Не удалось установить драйверы.", L"Драйверы устройства удалены.",
      L"Не удалось удалить драйверы."}},
}};

// The build lays the file beside Setup.exe, and the test executable lies there, too.
std::string ShippedBytes() {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    std::string folder = path.data();
    folder.erase(folder.rfind('\\') + 1);
    std::ifstream file(folder + "Lang.ini", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::wstring> ShippedLines() {
    const std::string bytes = ShippedBytes();
    std::wstring text;
    for (std::size_t index = 2; index + 1 < bytes.size(); index += 2) {
        text += static_cast<wchar_t>(static_cast<unsigned char>(bytes[index]) |
                                     static_cast<unsigned char>(bytes[index + 1]) << 8);
    }
    std::vector<std::wstring> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(L"\r\n", start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

} // namespace

TEST_CASE("Each text of the shipped Lang.ini arrives as it was written") {
    Machine m;
    m.WriteBytes(L"D:\\Packet\\Lang.ini", ShippedBytes());
    for (const Language& language : Languages) {
        for (std::size_t key = 0; key < Keys.size(); ++key) {
            LanguageText text{};
            LoadLanguageText(language.Code, Keys[key], text);
            CHECK(std::wstring(text.data()) == language.Texts[key]);
        }
    }
}

TEST_CASE("The shipped Lang.ini has just the known languages, each with all texts and no others") {
    std::vector<std::wstring> expected;
    for (const Language& language : Languages) {
        expected.push_back(L"[" + std::wstring(language.Code) + L"]");
        expected.insert(expected.end(), Keys.begin(), Keys.end());
    }
    std::vector<std::wstring> found;
    for (const std::wstring& line : ShippedLines()) {
        if (!line.empty() && line.front() != L';') {
            found.push_back(line.substr(0, line.find(L'=')));
        }
    }
    CHECK(found == expected);
}

TEST_CASE("Each shipped text fits into the program's buffer and into one line of the window") {
    constexpr std::size_t LongestText = 255;
    constexpr std::size_t LatinLine = 40; // 158 dialog units at 4 units for a letter
    for (const std::wstring& line : ShippedLines()) {
        if (line.starts_with(L"STR_")) {
            const std::wstring text = line.substr(line.find(L'=') + 1);
            CAPTURE(line);
            CHECK_FALSE(text.empty());
            CHECK(text.size() <= std::min(LongestText, LatinLine));
        }
    }
}

TEST_CASE("The shipped Lang.ini is UTF-16 with a byte order mark and Windows line ends") {
    const std::string bytes = ShippedBytes();
    REQUIRE(bytes.size() > 2);
    CHECK(bytes.substr(0, 2) == "\xFF\xFE");
    CHECK(bytes.size() % 2 == 0);
    int lineFeeds = 0;
    for (std::size_t index = 2; index + 1 < bytes.size(); index += 2) {
        if (bytes.substr(index, 2) == std::string("\n\0", 2)) {
            ++lineFeeds;
            CHECK(bytes.substr(index - 2, 2) == std::string("\r\0", 2));
        }
    }
    CHECK(lineFeeds > 60);
}
