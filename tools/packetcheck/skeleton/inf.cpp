#include "skeleton/packet_files.h"

namespace skeleton {

namespace {

// What a class asks of the INFs of its devices, besides a service.
std::wstring_view ClassAdvice(std::wstring_view className) {
    if (className == L"Ports") {
        return L"; A port needs AddReg = with PortSubClass and EnumPropPages32 as well.\n";
    }
    if (className == L"Modem") {
        return L"; A modem needs AddReg = with its commands and answers as well.\n";
    }
    if (className == L"Net") {
        return L"; A network card needs *IfType, *MediaType, *PhysicalMediaType, Characteristics, "
               L"and AddReg = as well.\n";
    }
    return L"";
}

std::wstring NameOf(const Device& device, std::size_t function) {
    const Function& one = device.Functions.at(function);
    return one.Name.empty() ? one.ClassName + L" of device " + device.Vendor + L":" + device.Product
                            : one.Name;
}

constexpr std::wstring_view Template = LR"(; {name}: {id}
; Written as a beginning. What is yours to change: Provider, DriverVer, the names in [Strings], and
; the drivers. Keep one file per copy section, and all copy sections in one folder.
[Version]
Signature = "$Windows NT$"
Class = {class}
ClassGuid = {guid}
Provider = %Maker%
CatalogFile = {file}.cat
DriverVer = 01/01/2024,1.0.0.0

; NTamd64 without a version behind it: Setup.exe reads no other decoration.
[Manufacturer]
%Maker% = Models, NTamd64

[Models.NTamd64]
%Device% = Install, {id}

{advice}[Install.NTamd64]
CopyFiles = DriverFile

[Install.NTamd64.Services]
AddService = {file}, 2, Service

[Service]
DisplayName = %Device%
ServiceType = 1
StartType = 3
ErrorControl = 1
ServiceBinary = %12%\{file}.sys

[DriverFile]
{file}.sys

[DestinationDirs]
DriverFile = 12

[SourceDisksNames]
1 = %Disk%

[SourceDisksFiles]
{file}.sys = 1

[Strings]
Maker = "Maker of device {vendor}:{product}"
Disk = "Driver disk"
Device = "{name}"
)";

void Replace(std::wstring& text, std::wstring_view mark, std::wstring_view value) {
    for (std::size_t at = text.find(mark); at != std::wstring::npos;
         at = text.find(mark, at + value.size())) {
        text.replace(at, mark.size(), value);
    }
}

} // namespace

std::wstring InfOf(const Device& device, std::size_t function) {
    const Function& one = device.Functions.at(function);
    std::wstring text(Template);
    Replace(text, L"{class}", one.ClassName);
    Replace(text, L"{guid}", one.ClassGuid);
    Replace(text, L"{file}", device.FileNameOf(function));
    Replace(text, L"{id}", device.IdOf(function));
    Replace(text, L"{advice}", ClassAdvice(one.ClassName));
    Replace(text, L"{vendor}", device.Vendor);
    Replace(text, L"{product}", device.Product);
    Replace(text, L"{name}", NameOf(device, function));
    Replace(text, L"\n", L"\r\n");
    return text;
}

} // namespace skeleton
