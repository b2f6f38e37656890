#include "proof/random_settings.h"

#include <map>

namespace proof {

namespace {

// Sections with their lines; the file has each section once.
using Sections = std::map<std::wstring, std::wstring>;

std::wstring Decorated(Dice& dice, const std::wstring& section) {
    return section + dice.Pick({L"", L"", L"", L".INSTALL", L".WIN10", L".INSTALL.WIN10",
                                L".UNINSTALL", L".WIN10.NTx64", L".WIN7", L".INSTALL.WIN10.NTx64"});
}

void Set(Dice& dice, Sections& sections, const wchar_t* section, const wchar_t* key,
         const std::wstring& value) {
    sections[Decorated(dice, section)] += std::wstring(key) + L"=" + value + L"\r\n";
    // A second place, perhaps a more special one, perhaps without a value.
    if (dice.Once(6)) {
        sections[Decorated(dice, section)] +=
            std::wstring(key) + L"=" + dice.Pick({L"", L"-1", L"1", L"2"}) + L"\r\n";
    }
}

// A text; the more special place may leave the word to the first one.
void SetText(Dice& dice, Sections& sections, const wchar_t* section, const wchar_t* key,
             const std::wstring& value) {
    sections[Decorated(dice, section)] += std::wstring(key) + L"=" + value + L"\r\n";
    if (dice.Once(6)) {
        sections[Decorated(dice, section)] += std::wstring(key) + L"=\r\n";
    }
}

std::wstring Parameters(Dice& dice, std::initializer_list<const wchar_t*> variables) {
    std::wstring text;
    for (std::uint32_t count = dice.Once(15) ? 0 : 1 + dice.Below(3); count != 0; --count) {
        text += L"," + dice.Pick(variables);
    }
    return text;
}

std::wstring FileLine(Dice& dice) {
    const std::wstring folder = dice.Pick({L"%s", L"%s", L"C:\\data\\", L"%sModem\\"});
    const std::wstring file = dice.Pick({L"a.txt", L"modem.dat", L"", L"%s"});
    return dice.Pick({L"1", L"2", L"3", L"2", L"4", L"x"}) + L"," + folder + L"," + file +
           (dice.Once(20) ? L"" : L",%s,") + dice.Pick({L"b.txt", L"x", L"c%s"}) +
           Parameters(dice, {L"$CD", L"$WINDOWS", L"$OSDRIVER", L"$OSPARTION", L"$System", L"$DATA",
                             L"$NONE", L"text", L" $CD"});
}

std::wstring RegistryLine(Dice& dice) {
    return dice.Pick({L"1", L"1", L"2", L"3", L"7"}) + L"," +
           dice.Pick({L"HKEY_LOCAL_MACHINE", L"HKEY_CURRENT_USER", L"%s", L"hkey_local_machine"}) +
           L"," + dice.Pick({L"SOFTWARE\\%s", L"SOFTWARE\\Modem", L"SOFTWARE\\%sModem\\", L""}) +
           L"," + dice.Pick({L"Port", L"%s", L"Device"}) + (dice.Once(20) ? L"" : L",COM3") + L"," +
           dice.Pick({L"1", L"1", L"4", L"7"}) +
           Parameters(dice, {L"$USERKEY", L"$Wow6432Node", L"$DEVID", L"$DATA", L"Modem",
                             L"HKEY_CURRENT_USER", L"$NONE"});
}

void Script(Dice& dice, Sections& sections, const wchar_t* section, bool files) {
    if (dice.Once(2)) {
        return;
    }
    const std::uint32_t lines = 1 + dice.Below(4);
    std::wstring text = L"OPERNUM=" + std::to_wstring(lines + dice.Below(2)) + L"\r\n";
    for (std::uint32_t line = 0; line < lines; ++line) {
        if (!dice.Once(10)) {
            text += L"OPER0" + std::to_wstring(line) + L"=" +
                    (files ? FileLine(dice) : RegistryLine(dice)) + L"\r\n";
        }
    }
    sections[Decorated(dice, section)] += text;
}

void Switch(Dice& dice, Sections& sections) {
    if (dice.Once(2)) {
        return;
    }
    Set(dice, sections, L"SHIFTDEVICE", L"NEEDSHIFTDEVICE", dice.Pick({L"1", L"1", L"256", L"0"}));
    Set(dice, sections, L"SHIFTDEVICE", L"SHIFTMODE", dice.Pick({L"0", L"1", L"2"}));
    if (!dice.Once(6)) {
        SetText(dice, sections, L"SHIFTDEVICE", L"SCSIDEVICE",
                L"USBSTOR\\CdRomDemo____Modem___________0100");
    }
    if (!dice.Once(6)) {
        SetText(dice, sections, L"SHIFTDEVICE", L"SCSICMD",
                dice.Pick({L"11,06,20,00,00,01", L"1b,0,0,0,2,0", L"1b", L"11, 6", L"xx"}));
    }
}

void Numbers(Dice& dice, Sections& sections) {
    Set(dice, sections, L"INSTALL", L"MODE", dice.Pick({L"0", L"1", L"1", L"1", L"2", L"3"}));
    if (!dice.Once(6)) {
        Set(dice, sections, L"INSTALL", L"COPYOEMTIMEOUT", dice.Pick({L"60", L"10", L"0"}));
    }
    Set(dice, sections, L"INSTALL", L"WAITONREADY", dice.Pick({L"0", L"1", L"256"}));
    Set(dice, sections, L"INSTALL", L"RETRYCOUNT", dice.Number(3));
    Set(dice, sections, L"INSTALL", L"INTERVAL", dice.Number(4));
    Set(dice, sections, L"ENUM", L"SCSIRSPTIMEOUT", dice.Number(8));
    if (!dice.Once(12)) {
        Set(dice, sections, L"ENUM", L"MAXCYCLE", std::to_wstring(1 + dice.Below(4)));
    }
    // Not 0: the clock must go on in a run that never ends.
    Set(dice, sections, L"ENUM", L"CYCLEINTERVAL", std::to_wstring(5 + dice.Below(40)));
    Set(dice, sections, L"ENUM", L"FIRST_ARRIVE", dice.Number(9));
    if (dice.Once(4)) {
        Set(dice, sections, L"USERSETTING", L"MATCHMODE", dice.Number(4));
    }
}

void Composite(Dice& dice, Sections& sections) {
    if (dice.Once(2)) {
        return;
    }
    for (const wchar_t* key : {L"NEEDCOMPOSITEDEAL", L"LOADSERIAL", L"LOADUSBCCGP"}) {
        Set(dice, sections, L"USERSETTING", key, dice.Number(2));
    }
}

} // namespace

std::wstring MakeSettings(Dice& dice) {
    Sections sections;
    Numbers(dice, sections);
    Switch(dice, sections);
    Composite(dice, sections);
    Script(dice, sections, L"PROCESS", false);
    Script(dice, sections, L"PRE_REG_OPER", false);
    Script(dice, sections, L"PRE_FILE_OPER", true);
    Script(dice, sections, L"POST_REG_OPER", false);
    Script(dice, sections, L"POST_FILE_OPER", true);
    SetText(dice, sections, L"USERSETTING", L"USERKEY", L"SOFTWARE\\User");
    sections[L"USER_ENV_PARA"] += L"DATA=C:\\data\\\r\n";
    if (dice.Once(4)) {
        SetText(dice, sections, L"DEVICEID", L"LOCATION",
                L"3,HKEY_LOCAL_MACHINE,SOFTWARE\\%s,Device,x,1,Modem");
    }
    std::wstring text;
    for (const auto& [name, lines] : sections) {
        text += L"[" + name + L"]\r\n" + lines;
    }
    return text;
}

} // namespace proof
