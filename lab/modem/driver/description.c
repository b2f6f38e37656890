#include "description.h"

#include "journal.h"

#define KEY_LENGTH 300

ModemDescription modemDescriptions[MODEM_LIMIT];
NodeDescription nodeDescriptions[NODE_LIMIT];
static WCHAR parametersPath[KEY_LENGTH];

/* ---- values of one registry key ------------------------------------------------------------- */

static HANDLE OpenKey(const WCHAR* path) {
    HANDLE key;
    OBJECT_ATTRIBUTES attributes;
    UNICODE_STRING name;
    RtlInitUnicodeString(&name, path);
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE | OBJ_KERNEL_HANDLE, NULL,
                               NULL);
    return NT_SUCCESS(ZwOpenKey(&key, KEY_READ, &attributes)) ? key : NULL;
}

/* Copies a value's bytes and returns how many; 0 when it is absent or larger than `size`. */
static ULONG ReadValue(HANDLE key, const WCHAR* name, void* to, ULONG size) {
    union {
        KEY_VALUE_PARTIAL_INFORMATION info;
        UCHAR room[sizeof(KEY_VALUE_PARTIAL_INFORMATION) + IDS_LENGTH * sizeof(WCHAR)];
    } value;
    UNICODE_STRING valueName;
    ULONG used;
    RtlInitUnicodeString(&valueName, name);
    if (!NT_SUCCESS(ZwQueryValueKey(key, &valueName, KeyValuePartialInformation, &value.info,
                                    sizeof(value), &used)) ||
        value.info.DataLength > size) {
        return 0;
    }
    memcpy(to, value.info.Data, value.info.DataLength);
    return value.info.DataLength;
}

static ULONG ReadNumber(HANDLE key, const WCHAR* name, ULONG otherwise) {
    ULONG value;
    return ReadValue(key, name, &value, sizeof(value)) == sizeof(value) ? value : otherwise;
}

/* `to` holds `length` characters and ends up zero-ended, empty when the value is absent. */
static void ReadText(HANDLE key, const WCHAR* name, WCHAR* to, ULONG length) {
    const ULONG bytes = ReadValue(key, name, to, (length - 1) * (ULONG)sizeof(WCHAR));
    to[bytes / sizeof(WCHAR)] = 0;
}

/* Like ReadText for a list of strings; returns its length in characters. */
static ULONG ReadList(HANDLE key, const WCHAR* name, WCHAR* to, ULONG length) {
    const ULONG read = ReadValue(key, name, to, (length - 2) * (ULONG)sizeof(WCHAR));
    const ULONG count = read / (ULONG)sizeof(WCHAR);
    to[count] = 0;
    to[count + 1] = 0;
    return count + 2;
}

/* ---- modems and nodes ----------------------------------------------------------------------- */

static HANDLE OpenNumbered(const WCHAR* kind, ULONG number) {
    WCHAR path[KEY_LENGTH + 20];
    _snwprintf(path, KEY_LENGTH + 20, L"%s\\%s%02u", parametersPath, kind, number);
    return OpenKey(path);
}

static void ReadModem(HANDLE key, ModemDescription* modem) {
    modem->startPersonality = ReadNumber(key, L"StartPersonality", PERSONALITY_OFF);
    modem->personalityAfterOrder = ReadNumber(key, L"PersonalityAfterOrder", PERSONALITY_MODEM);
    modem->obeys = ReadNumber(key, L"Obeys", 1) != 0;
    modem->switchDelay = ReadNumber(key, L"SwitchDelay", 0);
    modem->goneDelay = ReadNumber(key, L"GoneDelay", 0);
    modem->vendorOrder = ReadNumber(key, L"VendorOrder", 0);
    modem->scsiOrderLength = ReadValue(key, L"ScsiOrder", modem->scsiOrder, SCSI_ORDER_LIMIT);
    modem->inquiryLength = ReadValue(key, L"Inquiry", modem->inquiry, INQUIRY_SIZE);
    modem->isDescribed = TRUE;
}

static void ReadInterface(HANDLE key, NodeDescription* node) {
    WCHAR text[40];
    UNICODE_STRING guid;
    ReadText(key, L"Interface", text, 40);
    RtlInitUnicodeString(&guid, text);
    node->hasInterface =
        text[0] != 0 && NT_SUCCESS(RtlGUIDFromString(&guid, &node->interfaceClass));
}

static void ReadNode(HANDLE key, NodeDescription* node) {
    node->modem = ReadNumber(key, L"Modem", 0);
    node->personality = ReadNumber(key, L"Personality", PERSONALITY_MODEM);
    node->arrivesAfter = ReadNumber(key, L"ArrivesAfter", 0);
    node->leavesAfter = ReadNumber(key, L"LeavesAfter", 0);
    node->neverArrives = ReadNumber(key, L"NeverArrives", 0) != 0;
    node->refusesToOpen = ReadNumber(key, L"RefusesToOpen", 0) != 0;
    ReadInterface(key, node);
    ReadText(key, L"Class", node->className, CLASS_LENGTH);
    ReadText(key, L"ClassGuid", node->classGuid, CLASS_LENGTH);
    ReadText(key, L"Device", node->device, ID_LENGTH);
    ReadText(key, L"Instance", node->instance, ID_LENGTH);
    node->hardwareIdsLength = ReadList(key, L"HardwareIds", node->hardwareIds, IDS_LENGTH);
    node->compatibleIdsLength = ReadList(key, L"CompatibleIds", node->compatibleIds, IDS_LENGTH);
    /* A node without a name cannot be shown to the system. */
    node->isDescribed = node->modem < MODEM_LIMIT && node->device[0] != 0 && node->instance[0] != 0;
}

static void ReadModems(void) {
    ULONG i;
    for (i = 0; i < MODEM_LIMIT; ++i) {
        const HANDLE key = OpenNumbered(L"Modem", i);
        modemDescriptions[i].isDescribed = FALSE;
        if (key != NULL) {
            ReadModem(key, &modemDescriptions[i]);
            ZwClose(key);
        }
    }
}

static void ReadNodes(BOOLEAN (*isInUse)(ULONG node)) {
    ULONG i;
    for (i = 0; i < NODE_LIMIT; ++i) {
        HANDLE key;
        if (isInUse(i)) {
            continue;
        }
        nodeDescriptions[i].isDescribed = FALSE;
        key = OpenNumbered(L"Node", i);
        if (key != NULL) {
            ReadNode(key, &nodeDescriptions[i]);
            ZwClose(key);
        }
    }
}

void ReadDescriptionAgain(BOOLEAN (*isInUse)(ULONG node)) {
    WCHAR journal[JOURNAL_PATH_LENGTH];
    const HANDLE key = OpenKey(parametersPath);
    if (key == NULL) {
        WriteJournal("no description at %S", parametersPath);
        return;
    }
    ReadText(key, L"Journal", journal, JOURNAL_PATH_LENGTH);
    ZwClose(key);
    if (journal[0] != 0) {
        SetJournalPath(journal);
    }
    ReadModems();
    ReadNodes(isInUse);
}

static BOOLEAN NoneIsInUse(ULONG node) {
    (void)node;
    return FALSE;
}

void ReadDescription(const UNICODE_STRING* servicePath) {
    _snwprintf(parametersPath, KEY_LENGTH, L"%.*s\\Parameters",
               (int)(servicePath->Length / sizeof(WCHAR)), servicePath->Buffer);
    parametersPath[KEY_LENGTH - 1] = 0;
    ReadDescriptionAgain(NoneIsInUse);
}
