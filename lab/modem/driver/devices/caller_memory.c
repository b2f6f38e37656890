/* On Windows a driver reaches the caller's buffers itself. In Wine drivers live in a process of
 * their own, and the kernel function that copies between processes does nothing there. What does
 * work are two functions of ntdll.dll; but a driver that imports anything besides ntoskrnl.exe is
 * taken by Wine for an ordinary library and not for a driver. So the two are looked up by hand in
 * the copy of ntdll.dll that every Wine process has. */
#include "devices/caller_memory.h"

#include <ntimage.h>

#define PROCESS_VM_OPERATION_AND_WRITE 0x0028u

typedef NTSTATUS(NTAPI* OpenProcessFunction)(HANDLE*, ACCESS_MASK, OBJECT_ATTRIBUTES*, CLIENT_ID*);
typedef NTSTATUS(NTAPI* WriteMemoryFunction)(HANDLE, void*, const void*, SIZE_T, SIZE_T*);

NTSYSAPI PEPROCESS NTAPI IoGetRequestorProcess(PIRP irp);
NTSYSAPI HANDLE NTAPI PsGetProcessId(PEPROCESS process);

/* The process environment block names the loader's list of modules, in the order in which they
 * were initialised: ntdll.dll is always the first. The offsets are those of 64-bit processes. */
static UCHAR* FindNtdll(void) {
    const ULONG loaderDataOffset = 0x18;
    const ULONG initializationListOffset = 0x30;
    const ULONG baseBehindListEntry = 0x10;
    UCHAR* block;
    UCHAR* loaderData;
    UCHAR* firstEntry;
    __asm__ volatile("movq %%gs:0x60,%0" : "=r"(block));
    loaderData = *(UCHAR**)(void*)(block + loaderDataOffset);
    firstEntry = *(UCHAR**)(void*)(loaderData + initializationListOffset);
    return *(UCHAR**)(void*)(firstEntry + baseBehindListEntry);
}

static void* FindExport(UCHAR* image, const char* name) {
    const IMAGE_DOS_HEADER* const dos = (const void*)image;
    const IMAGE_NT_HEADERS64* const nt = (const void*)(image + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY* const where =
        &nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const IMAGE_EXPORT_DIRECTORY* const exports = (const void*)(image + where->VirtualAddress);
    const ULONG* const names = (const void*)(image + exports->AddressOfNames);
    const USHORT* const ordinals = (const void*)(image + exports->AddressOfNameOrdinals);
    const ULONG* const functions = (const void*)(image + exports->AddressOfFunctions);
    ULONG i;
    for (i = 0; i < exports->NumberOfNames; ++i) {
        if (strcmp((const char*)image + names[i], name) == 0) {
            return image + functions[ordinals[i]];
        }
    }
    return NULL;
}

NTSTATUS WriteCallerMemory(IRP* irp, void* to, const void* from, ULONG size) {
    UCHAR* const ntdll = FindNtdll();
    const OpenProcessFunction openProcess =
        (OpenProcessFunction)(ULONG_PTR)FindExport(ntdll, "NtOpenProcess");
    const WriteMemoryFunction writeMemory =
        (WriteMemoryFunction)(ULONG_PTR)FindExport(ntdll, "NtWriteVirtualMemory");
    OBJECT_ATTRIBUTES attributes;
    CLIENT_ID client;
    HANDLE process;
    SIZE_T written = 0;
    NTSTATUS status;
    if (openProcess == NULL || writeMemory == NULL) {
        return STATUS_NOT_SUPPORTED;
    }
    InitializeObjectAttributes(&attributes, NULL, 0, NULL, NULL);
    client.UniqueProcess = PsGetProcessId(IoGetRequestorProcess(irp));
    client.UniqueThread = NULL;
    status = openProcess(&process, PROCESS_VM_OPERATION_AND_WRITE, &attributes, &client);
    if (!NT_SUCCESS(status)) {
        return status;
    }
    status = writeMemory(process, to, from, size, &written);
    ZwClose(process);
    return status;
}
