#include "rules/inf/windows_files.h"

#include "common/text.h"

#include <algorithm>
#include <array>

namespace rules {

bool ComesWithWindows(std::wstring_view fileName) {
    static constexpr std::array<std::wstring_view, 84> Names{
        L"acpi.sys",     L"afd.sys",      L"atapi.sys",     L"cdrom.sys",    L"classpnp.sys",
        L"disk.sys",     L"hal.dll",      L"hidclass.sys",  L"hidparse.sys", L"hidusb.sys",
        L"http.sys",     L"i8042prt.sys", L"kernel32.dll",  L"kbdclass.sys", L"kbdhid.sys",
        L"ks.sys",       L"ksecdd.sys",   L"modem.sys",     L"mouclass.sys", L"mouhid.sys",
        L"mountmgr.sys", L"mrxsmb.sys",   L"msgpioclx.sys", L"msrpc.sys",    L"mup.sys",
        L"ndis.sys",     L"ndistapi.sys", L"ndisuio.sys",   L"ndiswan.sys",  L"netbios.sys",
        L"netbt.sys",    L"netio.sys",    L"ntdll.dll",     L"ntfs.sys",     L"ntoskrnl.exe",
        L"partmgr.sys",  L"parport.sys",  L"pci.sys",       L"portcls.sys",  L"ppp.sys",
        L"rasacd.sys",   L"rasl2tp.sys",  L"raspppoe.sys",  L"raspptp.sys",  L"rndismp.sys",
        L"rndismp6.sys", L"rndismpx.sys", L"scsiport.sys",  L"serenum.sys",  L"serial.sys",
        L"sermouse.sys", L"setupapi.dll", L"sfloppy.sys",   L"smartcrd.sys", L"storport.sys",
        L"swenum.sys",   L"tape.sys",     L"tcpip.sys",     L"tdi.sys",      L"tdtcp.sys",
        L"usb8023.sys",  L"usb8023x.sys", L"usbaudio.sys",  L"usbccgp.sys",  L"usbcir.sys",
        L"usbd.sys",     L"usbehci.sys",  L"usbhub.sys",    L"usbhub3.sys",  L"usbohci.sys",
        L"usbport.sys",  L"usbprint.sys", L"usbscan.sys",   L"usbser.sys",   L"usbstor.sys",
        L"usbuhci.sys",  L"usbvideo.sys", L"usbxhci.sys",   L"ucx01000.sys", L"volmgr.sys",
        L"wdf01000.sys", L"wdfldr.sys",   L"winusb.sys",    L"wmbclass.sys"};
    return std::any_of(Names.begin(), Names.end(), [fileName](std::wstring_view name) {
        return EqualIgnoringCase(name, fileName);
    });
}

} // namespace rules
