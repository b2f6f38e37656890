#include "presence.h"

#include "nodes.h"

#define KEY_LENGTH (2 * ID_LENGTH + 100)

static BOOLEAN OpenEnumKey(ULONG node, const WCHAR* below, BOOLEAN create, HANDLE* key) {
    WCHAR instanceId[2 * ID_LENGTH];
    WCHAR path[KEY_LENGTH];
    UNICODE_STRING name;
    OBJECT_ATTRIBUTES attributes;
    FormatInstanceId(node, instanceId);
    _snwprintf(path, KEY_LENGTH, L"\\Registry\\Machine\\System\\CurrentControlSet\\Enum\\%s%s",
               instanceId, below);
    path[KEY_LENGTH - 1] = 0;
    RtlInitUnicodeString(&name, path);
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE | OBJ_KERNEL_HANDLE, NULL,
                               NULL);
    if (create) {
        return NT_SUCCESS(
            ZwCreateKey(key, KEY_ALL_ACCESS, &attributes, 0, NULL, REG_OPTION_VOLATILE, NULL));
    }
    return NT_SUCCESS(ZwOpenKey(key, KEY_ALL_ACCESS, &attributes));
}

BOOLEAN NodeKeyExists(ULONG node) {
    HANDLE key;
    if (!OpenEnumKey(node, L"", FALSE, &key)) {
        return FALSE;
    }
    ZwClose(key);
    return TRUE;
}

void MarkPresent(ULONG node) {
    HANDLE key;
    if (OpenEnumKey(node, L"\\Control", TRUE, &key)) {
        ZwClose(key);
    }
}

void MarkAbsent(ULONG node) {
    HANDLE key;
    if (OpenEnumKey(node, L"\\Control", FALSE, &key)) {
        ZwDeleteKey(key);
        ZwClose(key);
    }
}

void ForgetPhantom(ULONG node) {
    HANDLE key;
    UNICODE_STRING phantom;
    RtlInitUnicodeString(&phantom, L"Phantom");
    if (OpenEnumKey(node, L"", FALSE, &key)) {
        ZwDeleteValueKey(key, &phantom);
        ZwClose(key);
    }
}

static BOOLEAN HasValue(HANDLE key, const WCHAR* name) {
    UNICODE_STRING valueName;
    ULONG size = 0;
    RtlInitUnicodeString(&valueName, name);
    return ZwQueryValueKey(key, &valueName, KeyValuePartialInformation, NULL, 0, &size) !=
           STATUS_OBJECT_NAME_NOT_FOUND;
}

static void SetText(HANDLE key, const WCHAR* name, WCHAR* text) {
    UNICODE_STRING valueName;
    RtlInitUnicodeString(&valueName, name);
    ZwSetValueKey(key, &valueName, 0, REG_SZ, text, (ULONG)((wcslen(text) + 1) * sizeof(WCHAR)));
}

void InstallDriverOfSystem(ULONG node) {
    NodeDescription* const description = &nodeDescriptions[node];
    HANDLE key;
    if (description->className[0] == 0 || !OpenEnumKey(node, L"", FALSE, &key)) {
        return;
    }
    if (!HasValue(key, L"Class")) {
        SetText(key, L"Class", description->className);
        SetText(key, L"ClassGUID", description->classGuid);
    }
    ZwClose(key);
}
