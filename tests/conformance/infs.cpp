#include "conformance/infs.h"

namespace conformance {

const SetupClass Ports = {L"Ports", L"{4D36E978-E325-11CE-BFC1-08002BE10318}"};
const SetupClass Usb = {L"USB", L"{36FC9E60-C465-11CF-8056-444553540000}"};

namespace {

std::wstring VersionSection(const SetupClass& setupClass) {
    return L"[Version]\r\nSignature=\"$Windows NT$\"\r\nClass=" + setupClass.Name +
           L"\r\nClassGuid=" + setupClass.Guid + L"\r\nDriverVer=01/02/2020,1.2.3.4\r\n";
}

} // namespace

std::wstring SmallInf(const std::wstring& id, const std::wstring& mark,
                      const SetupClass& setupClass) {
    return VersionSection(setupClass) +
           L"Provider=%Maker%\r\n"
           L"[Manufacturer]\r\n%Maker%=Models,NTamd64\r\n"
           L"[Models.NTamd64]\r\n%Name%=Inst," +
           id +
           L"\r\n[Inst.NT]\r\n"
           L"[Inst.NT.Services]\r\nAddService=,2\r\n"
           L"[Strings]\r\nMaker=\"Statement\"\r\nName=\"Statement " +
           mark + L"\"\r\n";
}

std::wstring SevenModels(const std::wstring& id, const std::wstring& compatibleId,
                         const SetupClass& setupClass) {
    return VersionSection(setupClass) + L"[Manufacturer]\r\nOne=Models,NTamd64,NTia64\r\n" +
           L"[Models.NTamd64]\r\n" +                        //
           L"d0=Inst0," + id + L"\r\n" +                    //
           L"d1=Inst1," + id + L"\r\n" +                    //
           L"d2=Inst2," + compatibleId + L"\r\n" +          //
           L"d3=Inst3,other\r\n" +                          //
           L"d4=Inst4,wrong_hw," + id + L"\r\n" +           //
           L"d5=Inst5,wrong_hw," + compatibleId + L"\r\n" + //
           L"[Models.NTia64]\r\nd6=Inst6," + id + L"\r\n";
}

} // namespace conformance
