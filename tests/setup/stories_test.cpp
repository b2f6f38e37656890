// Whole runs, told from the first line to the last: nothing is done that is not told here.
#include "setup/run_program.h"
#include "support/doctest_support.h"

#include <sstream>

using namespace machine;

namespace {

Lines LinesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// As lines of text: a log line may hold line breaks.
Lines StoryOf(const Machine& m) {
    std::string text;
    for (const std::string& line : m.Story()) {
        text += line + "\n";
    }
    return LinesOf(text);
}

constexpr const char* ScriptsStory = R"story(LOG Setup: Main thread started, thread id 0x00000100
SetHook(D:\Packet\Vantrel64.DLL)
OpenSCManagerW(null, ServicesActive, 0xF003F)
EnumServicesStatusW(manager1, 0xB, 3, 0)
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set1, 0)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiEnumDeviceInfo(set1, 1)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 200)
LOG CleanDevice: Dealing with device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 information in register
SetupDiGetDeviceRegistryPropertyW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 7, 520)
SetupDiSetClassInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 0x5, 16)
SetupDiCallClassInstaller(0x5, set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
SetupDiGetDeviceInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
LOG CleanDevice: Device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 removed successfully,reboot state is 0
LOG CleanDevice: device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 information in register was removed,because device was not exist
SetupDiEnumDeviceInfo(set1, 2)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
SetupDiEnumDeviceInfo(set1, 3)
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set2, 0)
SetupDiGetDeviceInstanceIdW(set2, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiEnumDeviceInfo(set2, 1)
SetupDiGetDeviceInstanceIdW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
LOG CleanDevice: Dealing with device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 information in register
SetupDiGetDeviceRegistryPropertyW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 7, 520)
SetupDiSetClassInstallParamsW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 0x5, 16)
SetupDiCallClassInstaller(0x5, set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
SetupDiGetDeviceInstallParamsW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
LOG CleanDevice: Device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 removed successfully,reboot state is 0
LOG CleanDevice: device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 information in register was removed,because device was not exist
SetupDiEnumDeviceInfo(set2, 2)
FindFirstFileW(C:\Windows\INF\OEM*.INF)
FindFirstFileW(C:\Windows\INF\OEM*.INF)
GetFileAttributesW(C:\Windows\SYSTEM32\DRIVERS\modem.sys)
LOG RemoveFile: File C:\Windows\SYSTEM32\DRIVERS\modem.sys not exist
GetFileAttributesW(C:\Windows\SYSTEM32\DRIVERS\modem.sys)
LOG RemoveFile: File C:\Windows\SYSTEM32\DRIVERS\modem.sys not exist
OpenSCManagerW(null, ServicesActive, 0xF003F)
EnumServicesStatusW(manager2, 0xB, 3, 0)
LOG Setup: Setup process complete, total 0 seconds used
Sleep(2000)
CleanHook()
)story";

constexpr const char* UninstallStory = R"story(LOG Setup: Main thread started, thread id 0x00000100
LOG GetDriverDir: Get system WIN7	bit 64
LOG GetCompositeDeviceIDFromInf: kkkkkkkkkk D:\Packet\WIN7\ kkkkkkkkk
FindFirstFileW(D:\Packet\WIN7\*.INF)
LOG GetDevIDToUnInstall: No device id configuration found in regedit,use device id found in inf
LOG UnInstall: Device to uninstall USB\VID_3A9D&PID_9001
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set1, 0)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiBuildDriverInfoList(set1, USB\VID_3A9D&PID_9001\5&1, 2)
SetupDiEnumDriverInfoW(set1, USB\VID_3A9D&PID_9001\5&1, 2, 0)
SetupDiEnumDeviceInfo(set1, 1)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 200)
SetupDiBuildDriverInfoList(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 2)
SetupDiEnumDriverInfoW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 2, 0)
SetupDiGetDriverInfoDetailW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, null, 0)
SetupDiGetDriverInfoDetailW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, _, 1634)
SetupDiEnumDriverInfoW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 2, 1)
SetupDiEnumDeviceInfo(set1, 2)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
SetupDiBuildDriverInfoList(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 2)
SetupDiEnumDriverInfoW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 2, 0)
SetupDiGetDriverInfoDetailW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, null, 0)
SetupDiGetDriverInfoDetailW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, _, 1634)
SetupDiEnumDriverInfoW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 2, 1)
SetupDiEnumDeviceInfo(set1, 3)
LOG UnInstall: Removing device USB\VID_3A9D&PID_9001&MI_01\6&1&0001
SetupDiSetClassInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 0x5, 16)
SetupDiCallClassInstaller(0x5, set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
SetupDiGetDeviceInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
LOG UnInstall: Device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 removed successfully,reboot state is 0
LOG UnInstall: Removing device USB\VID_3A9D&PID_9001&MI_00\6&1&0000
SetupDiSetClassInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 0x5, 16)
SetupDiCallClassInstaller(0x5, set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
SetupDiGetDeviceInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
LOG UnInstall: Device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 removed successfully,reboot state is 0
LOG UnInstall: Removing device USB\VID_3A9D&PID_9001\5&1
SetupDiSetClassInstallParamsW(set1, USB\VID_3A9D&PID_9001\5&1, 0x5, 16)
SetupDiCallClassInstaller(0x5, set1, USB\VID_3A9D&PID_9001\5&1)
SetupDiGetDeviceInstallParamsW(set1, USB\VID_3A9D&PID_9001\5&1)
LOG UnInstall: Device USB\VID_3A9D&PID_9001\5&1 removed successfully,reboot state is 0
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
SetupUninstallOEMInfW(OEM3.INF, 0x1)
LOG UnInstall: Normal uninstall inf C:\WINDOWS\INF\OEM3.INF OK
SetupUninstallOEMInfW(OEM4.INF, 0x1)
LOG UnInstall: Normal uninstall inf C:\WINDOWS\INF\OEM4.INF OK
GetFileAttributesW(C:\WINDOWS\INF\OEM3.INF)
LOG RemoveFile: File C:\WINDOWS\INF\OEM3.INF not exist
GetFileAttributesW(C:\WINDOWS\INF\OEM3.PNF)
LOG RemoveFile: File C:\WINDOWS\INF\OEM3.PNF not exist
GetFileAttributesW(C:\WINDOWS\INF\OEM4.INF)
LOG RemoveFile: File C:\WINDOWS\INF\OEM4.INF not exist
GetFileAttributesW(C:\WINDOWS\INF\OEM4.PNF)
LOG RemoveFile: File C:\WINDOWS\INF\OEM4.PNF not exist
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.sys)
LOG UnInstall: Normal delete sys C:\windows\system32\drivers\modem.sys
GetFileAttributesW(C:\windows\system32\drivers\modem.sys)
SetFileAttributesW(C:\windows\system32\drivers\modem.sys, 0x80)
DeleteFileW(C:\windows\system32\drivers\modem.sys)
LOG RemoveFile: File C:\windows\system32\drivers\modem.sys was deleted successfully
CM_Locate_DevNodeW(null, 0)
CM_Reenumerate_DevNode(0)
LOG Setup: Setup process complete, total 0 seconds used
Sleep(2000)
CleanHook()
)story";

constexpr const char* DirectStory = R"story(LOG Setup: Main thread started, thread id 0x00000100
SetHook(D:\Packet\Vantrel64.DLL)
OpenSCManagerW(null, ServicesActive, 0xF003F)
EnumServicesStatusW(manager1, 0xB, 3, 0)
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set1, 0)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiEnumDeviceInfo(set1, 1)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 200)
LOG CleanDevice: Dealing with device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 information in register
SetupDiGetDeviceRegistryPropertyW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 7, 520)
SetupDiSetClassInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 0x5, 16)
SetupDiCallClassInstaller(0x5, set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
SetupDiGetDeviceInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
LOG CleanDevice: Device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 removed successfully,reboot state is 0
LOG CleanDevice: device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 information in register was removed,because device was not exist
SetupDiEnumDeviceInfo(set1, 2)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
SetupDiEnumDeviceInfo(set1, 3)
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set2, 0)
SetupDiGetDeviceInstanceIdW(set2, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiEnumDeviceInfo(set2, 1)
SetupDiGetDeviceInstanceIdW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
LOG CleanDevice: Dealing with device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 information in register
SetupDiGetDeviceRegistryPropertyW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 7, 520)
SetupDiSetClassInstallParamsW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 0x5, 16)
SetupDiCallClassInstaller(0x5, set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
SetupDiGetDeviceInstallParamsW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
LOG CleanDevice: Device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 removed successfully,reboot state is 0
LOG CleanDevice: device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 information in register was removed,because device was not exist
SetupDiEnumDeviceInfo(set2, 2)
FindFirstFileW(C:\Windows\INF\OEM*.INF)
FindFirstFileW(C:\Windows\INF\OEM*.INF)
GetFileAttributesW(C:\Windows\SYSTEM32\DRIVERS\modem.sys)
LOG RemoveFile: File C:\Windows\SYSTEM32\DRIVERS\modem.sys not exist
GetFileAttributesW(C:\Windows\SYSTEM32\DRIVERS\modem.sys)
LOG RemoveFile: File C:\Windows\SYSTEM32\DRIVERS\modem.sys not exist
LOG RefreshDeviceSet: Waiting 0 seconds for system to enum device...
Sleep(0)
CMP_WaitNoPendingInstallEvents(INFINITE)
CM_Locate_DevNodeW(null, 0)
CM_Reenumerate_DevNode(0)
CMP_WaitNoPendingInstallEvents(INFINITE)
LOG RefreshDeviceSet: Device is ready for auto match
LOG AutoDeviceMatch: Auto matching device...
Sleep(5000)
LOG AutoDeviceMatch: User set match mode to 0
LOG AutoDeviceMatch: Max match cycle is 2 times, cycle interval is 1 seconds
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
SetupDiGetClassDevsW(null, null, 0x6)
SetupDiEnumDeviceInfo(set3, 0)
SetupDiGetDeviceInstanceIdW(set3, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiEnumDeviceInfo(set3, 1)
SetupDiGetDeviceInstanceIdW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 200)
SetupDiEnumDeviceInfo(set3, 2)
SetupDiGetDeviceInstanceIdW(set3, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
SetupDiEnumDeviceInfo(set3, 3)
LOG AutoDeviceMatch: Auto device match finish,total 2 devices matched
LOG UpdateInstall: Matched device USB\VID_3A9D&PID_9001&MI_00
LOG UpdateInstall: Matched device USB\VID_3A9D&PID_9001&MI_01
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
LOG UpdateInstall: Inf D:\Packet\WIN7\modem.inf priority is 0
LOG UpdateInstall: Inf D:\Packet\WIN7\net.inf priority is 1
LoadLibraryExW(C:\Windows\System32\NewDev.dll, 0x8)
LoadLibraryW(NewDev.dll)
GetProcAddress(library2, UpdateDriverForPlugAndPlayDevicesW)
LOG UpdateInstall: Retry count is 1 times,retry interval is 2 seconds
LOG UpdateInstall: Installing device USB\VID_3A9D&PID_9001&MI_00 using inf D:\Packet\WIN7\modem.inf
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
LOG UpdateInstall:
 USB\VID_3A9D&PID_9001&MI_00
D:\Packet\WIN7\modem.inf

UpdateDriverForPlugAndPlayDevicesW(USB\VID_3A9D&PID_9001&MI_00, D:\Packet\WIN7\modem.inf, 0x1)
LOG UpdateInstall: Device USB\VID_3A9D&PID_9001&MI_00 successfully installed with inf D:\Packet\WIN7\modem.inf,reboot status is 0
LOG UpdateInstall: Installing device USB\VID_3A9D&PID_9001&MI_01 using inf D:\Packet\WIN7\modem.inf
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
LOG UpdateInstall:
 USB\VID_3A9D&PID_9001&MI_01
D:\Packet\WIN7\net.inf

LOG UpdateInstall: Inf D:\Packet\WIN7\modem.inf is not suitable for device USB\VID_3A9D&PID_9001&MI_01
LOG UpdateInstall: Installing device USB\VID_3A9D&PID_9001&MI_01 using inf D:\Packet\WIN7\net.inf
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
LOG UpdateInstall:
 USB\VID_3A9D&PID_9001&MI_01
D:\Packet\WIN7\net.inf

UpdateDriverForPlugAndPlayDevicesW(USB\VID_3A9D&PID_9001&MI_01, D:\Packet\WIN7\net.inf, 0x1)
LOG UpdateInstall: Device USB\VID_3A9D&PID_9001&MI_01 successfully installed with inf D:\Packet\WIN7\net.inf,reboot status is 0
OpenSCManagerW(null, ServicesActive, 0xF003F)
EnumServicesStatusW(manager2, 0xB, 3, 0)
LOG Setup: Setup process complete, total 5 seconds used
Sleep(2000)
CleanHook()
)story";

constexpr const char* FailedCopyStory = R"story(LOG Setup: Main thread started, thread id 0x00000100
OpenSCManagerW(null, ServicesActive, 0xF003F)
EnumServicesStatusW(manager1, 0xB, 3, 0)
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set1, 0)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiEnumDeviceInfo(set1, 1)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 200)
LOG CleanDevice: Dealing with device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 information in register
SetupDiGetDeviceRegistryPropertyW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 7, 520)
SetupDiSetClassInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 0x5, 16)
SetupDiCallClassInstaller(0x5, set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
SetupDiGetDeviceInstallParamsW(set1, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
LOG CleanDevice: Device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 removed successfully,reboot state is 0
LOG CleanDevice: device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 information in register was removed,because device was not exist
SetupDiEnumDeviceInfo(set1, 2)
SetupDiGetDeviceInstanceIdW(set1, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
SetupDiEnumDeviceInfo(set1, 3)
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set2, 0)
SetupDiGetDeviceInstanceIdW(set2, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiEnumDeviceInfo(set2, 1)
SetupDiGetDeviceInstanceIdW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
LOG CleanDevice: Dealing with device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 information in register
SetupDiGetDeviceRegistryPropertyW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 7, 520)
SetupDiSetClassInstallParamsW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 0x5, 16)
SetupDiCallClassInstaller(0x5, set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
SetupDiGetDeviceInstallParamsW(set2, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
LOG CleanDevice: Device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 removed successfully,reboot state is 0
LOG CleanDevice: device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 information in register was removed,because device was not exist
SetupDiEnumDeviceInfo(set2, 2)
FindFirstFileW(C:\Windows\INF\OEM*.INF)
FindFirstFileW(C:\Windows\INF\OEM*.INF)
GetFileAttributesW(C:\Windows\SYSTEM32\DRIVERS\modem.sys)
LOG RemoveFile: File C:\Windows\SYSTEM32\DRIVERS\modem.sys not exist
GetFileAttributesW(C:\Windows\SYSTEM32\DRIVERS\modem.sys)
LOG RemoveFile: File C:\Windows\SYSTEM32\DRIVERS\modem.sys not exist
CM_Locate_DevNodeW(null, 0)
CM_Reenumerate_DevNode(0)
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
LOG PreInstall: Inf to copy D:\Packet\WIN7\modem.inf
LOG PreInstall: Inf to copy D:\Packet\WIN7\net.inf
PeekMessageW(null, 0, 0, 1)
CreateSemaphoreW(0, 1, SemPreInstallThreadSYN)
CreateSemaphoreW(0, 1, SemPreInstallThreadReady)
OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)
CreateThread(0, 0)
WaitForSingleObject(semaphore3, INFINITE)
OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadSYN)
OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)
ReleaseSemaphore(semaphore5, 1)
WaitForSingleObject(semaphore4, 60000)
LOG PreInstall: Watchdog thread started, thread id 0x00000104
OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)
CreateThread(0, 0)
WaitForSingleObject(semaphore6, INFINITE)
OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadSYN)
OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)
ReleaseSemaphore(semaphore8, 1)
LOG PreInstallWorkItemThreadFun: Copying inf D:\Packet\WIN7\modem.inf to system inf floder...
LOG PreInstallWorkItemThreadFun: Copying inf to system inf floder : FORCE
SetupCopyOEMInfW(D:\Packet\WIN7\modem.inf, null, 1, 0x0, 260)
ReleaseSemaphore(semaphore7, 1)
LOG PreInstallWorkItemThreadFun: Inf D:\Packet\WIN7\modem.inf was copied to inf C:\Windows\INF\oem0.inf
LOG PreInstallWorkItemThreadFun: Copying inf D:\Packet\WIN7\net.inf to system inf floder...
LOG PreInstallWorkItemThreadFun: Copying inf to system inf floder : FORCE
SetupCopyOEMInfW(D:\Packet\WIN7\net.inf, null, 1, 0x0, 260) -> fails 0x5
LOG PreInstallWorkItemThreadFun: Copying inf D:\Packet\WIN7\net.inf to system inf floder fail, error code 0x00000005
PostThreadMessageW(0x100, 2026, 0x108, 0x0)
WaitForSingleObject(semaphore4, 60000)
LOG PreInstall: Workitem thread started, thread id 0x00000108
GetMessageW(null, 0, 0)
LOG PreInstall: Message 0x7EA from thread 0x00000108
LOG Setup: Setup process fail,begin rollback...
LOG GetDriverDir: Get system WIN7	bit 64
LOG GetCompositeDeviceIDFromInf: kkkkkkkkkk D:\Packet\WIN7\ kkkkkkkkk
FindFirstFileW(D:\Packet\WIN7\*.INF)
LOG GetDevIDToUnInstall: No device id configuration found in regedit,use device id found in inf
LOG UnInstall: Device to uninstall USB\VID_3A9D&PID_9001
SetupDiGetClassDevsW(null, USB, 0x4)
SetupDiEnumDeviceInfo(set3, 0)
SetupDiGetDeviceInstanceIdW(set3, USB\VID_3A9D&PID_9001\5&1, 200)
SetupDiBuildDriverInfoList(set3, USB\VID_3A9D&PID_9001\5&1, 2)
SetupDiEnumDriverInfoW(set3, USB\VID_3A9D&PID_9001\5&1, 2, 0)
SetupDiEnumDeviceInfo(set3, 1)
SetupDiGetDeviceInstanceIdW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 200)
SetupDiBuildDriverInfoList(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 2)
SetupDiEnumDriverInfoW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 2, 0)
SetupDiGetDriverInfoDetailW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, null, 0)
SetupDiGetDriverInfoDetailW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, _, 1634)
SetupDiEnumDriverInfoW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 2, 1)
SetupDiEnumDeviceInfo(set3, 2)
SetupDiGetDeviceInstanceIdW(set3, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 200)
SetupDiBuildDriverInfoList(set3, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 2)
SetupDiEnumDriverInfoW(set3, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 2, 0)
SetupDiEnumDeviceInfo(set3, 3)
LOG UnInstall: Removing device USB\VID_3A9D&PID_9001&MI_01\6&1&0001
SetupDiSetClassInstallParamsW(set3, USB\VID_3A9D&PID_9001&MI_01\6&1&0001, 0x5, 16)
SetupDiCallClassInstaller(0x5, set3, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
SetupDiGetDeviceInstallParamsW(set3, USB\VID_3A9D&PID_9001&MI_01\6&1&0001)
LOG UnInstall: Device USB\VID_3A9D&PID_9001&MI_01\6&1&0001 removed successfully,reboot state is 0
LOG UnInstall: Removing device USB\VID_3A9D&PID_9001&MI_00\6&1&0000
SetupDiSetClassInstallParamsW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000, 0x5, 16)
SetupDiCallClassInstaller(0x5, set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
SetupDiGetDeviceInstallParamsW(set3, USB\VID_3A9D&PID_9001&MI_00\6&1&0000)
LOG UnInstall: Device USB\VID_3A9D&PID_9001&MI_00\6&1&0000 removed successfully,reboot state is 0
LOG UnInstall: Removing device USB\VID_3A9D&PID_9001\5&1
SetupDiSetClassInstallParamsW(set3, USB\VID_3A9D&PID_9001\5&1, 0x5, 16)
SetupDiCallClassInstaller(0x5, set3, USB\VID_3A9D&PID_9001\5&1)
SetupDiGetDeviceInstallParamsW(set3, USB\VID_3A9D&PID_9001\5&1)
LOG UnInstall: Device USB\VID_3A9D&PID_9001\5&1 removed successfully,reboot state is 0
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.INF)
SetupUninstallOEMInfW(OEM0.INF, 0x1)
LOG UnInstall: Normal uninstall inf C:\WINDOWS\INF\OEM0.INF OK
GetFileAttributesW(C:\WINDOWS\INF\OEM0.INF)
LOG RemoveFile: File C:\WINDOWS\INF\OEM0.INF not exist
GetFileAttributesW(C:\WINDOWS\INF\OEM0.PNF)
LOG RemoveFile: File C:\WINDOWS\INF\OEM0.PNF not exist
LOG GetDriverDir: Get system WIN7	bit 64
FindFirstFileW(D:\Packet\WIN7\*.sys)
LOG UnInstall: Normal delete sys C:\windows\system32\drivers\modem.sys
GetFileAttributesW(C:\windows\system32\drivers\modem.sys)
LOG RemoveFile: File C:\windows\system32\drivers\modem.sys not exist
LOG Setup: Setup process fail,see more detail in log file
Sleep(2000)
CleanHook()
)story";

} // namespace

TEST_CASE("An install of scripts only: the whole story") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=3\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(StoryOf(m) == LinesOf(ScriptsStory));
}

TEST_CASE("An uninstall: the whole story") {
    Machine m;
    SetUpInstalledModem(m, L"");
    CHECK(RunProgram(L"-u") == 1);
    CHECK(StoryOf(m) == LinesOf(UninstallStory));
}

TEST_CASE("An install of the present devices: the whole story") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=1\r\n");
    CHECK(RunProgram(L"-i") == 1);
    CHECK(StoryOf(m) == LinesOf(DirectStory));
}

TEST_CASE("A staging whose second copy fails, and its rollback: the whole story") {
    Machine m;
    SetUpModem(m, L"[INSTALL]\r\nMODE=0\r\n");
    m.FailCall("SetupCopyOEMInfW", 2, ERROR_ACCESS_DENIED);
    CHECK(RunProgram(L"-i") == 0);
    CHECK(StoryOf(m) == LinesOf(FailedCopyStory));
}
