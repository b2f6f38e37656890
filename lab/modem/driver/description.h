/* The modems as a person described them: read from the driver's Parameters key, which
 * lab/modem_description writes. Nothing in here changes while the modems live. */
#pragma once

#include "kernel.h"

#define IDS_LENGTH (2u * ID_LENGTH) /* characters of a list of ids, all zeros included */
#define CLASS_LENGTH 40u
#define SCSI_ORDER_LIMIT 16u
#define INQUIRY_SIZE 36u

/* Times are milliseconds. */
typedef struct {
    BOOLEAN isDescribed;
    ULONG startPersonality;      /* shown when a session begins */
    ULONG personalityAfterOrder; /* shown after an obeyed order; may be the same as before */
    BOOLEAN obeys;               /* FALSE: orders are noted, answered with success, and ignored */
    ULONG switchDelay;           /* from the order to the going of the old nodes */
    ULONG goneDelay;             /* from their going to the new personality */
    ULONG vendorOrder;           /* control code that means "switch"; 0: none */
    UCHAR scsiOrder[SCSI_ORDER_LIMIT];
    ULONG scsiOrderLength; /* how many first bytes of a command are compared; 0: none */
    UCHAR inquiry[INQUIRY_SIZE];
    ULONG inquiryLength;
} ModemDescription;

/* Id lists are several zero-ended strings behind each other, ended by an empty one. */
typedef struct {
    BOOLEAN isDescribed;
    ULONG modem;        /* the modem it is part of */
    ULONG personality;  /* the one in which it shows */
    ULONG arrivesAfter; /* from the beginning of the personality */
    ULONG leavesAfter;  /* the same, 0: stays */
    BOOLEAN neverArrives;
    BOOLEAN refusesToOpen;
    BOOLEAN hasInterface;
    GUID interfaceClass;
    WCHAR className[CLASS_LENGTH]; /* of the driver that comes with Windows; empty: none fits */
    WCHAR classGuid[CLASS_LENGTH];
    WCHAR device[ID_LENGTH];
    WCHAR instance[ID_LENGTH];
    WCHAR hardwareIds[IDS_LENGTH];
    ULONG hardwareIdsLength; /* characters */
    WCHAR compatibleIds[IDS_LENGTH];
    ULONG compatibleIdsLength;
} NodeDescription;

extern ModemDescription modemDescriptions[MODEM_LIMIT];
extern NodeDescription nodeDescriptions[NODE_LIMIT];

/* Reads everything from the key Parameters under `servicePath`. */
void ReadDescription(const UNICODE_STRING* servicePath);

/* Reads the same place again. A node that is in use keeps its description. */
void ReadDescriptionAgain(BOOLEAN (*isInUse)(ULONG node));
