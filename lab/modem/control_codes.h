/* What user programs and the driver say to each other through \\.\VModemCtl.
 * Include after <ntddk.h> or <windows.h>. */
#pragma once

/* The same arithmetic as CTL_CODE(FILE_DEVICE_UNKNOWN, n, METHOD_BUFFERED, FILE_ANY_ACCESS). */
#define MODEM_CONTROL_CODE(n) ((0x22u << 16) | ((n) << 2))

/* in: ModemWish. The modem changes to that personality; the call does not wait for it. */
#define MODEM_CONTROL_WISH MODEM_CONTROL_CODE(0xA00u)
/* in: ULONG number of the modem, out: ModemState. Fails for a modem that is not described. */
#define MODEM_CONTROL_STATE MODEM_CONTROL_CODE(0xA01u)
/* The bus is looked through again: nodes taken off by REMOVE, or whose registry key was deleted,
 * come back. ModemState.scanning tells when it is done. */
#define MODEM_CONTROL_RESCAN MODEM_CONTROL_CODE(0xA02u)
/* The Parameters key is read again; nodes that are plugged keep what they have until unplugged. */
#define MODEM_CONTROL_RELOAD MODEM_CONTROL_CODE(0xA03u)
/* in: instance id, zero-ended. The node goes and stays away until the next RESCAN. */
#define MODEM_CONTROL_REMOVE MODEM_CONTROL_CODE(0xA04u)
/* in: ULONG number of the node, out: NodeState. Fails for a node that is not described. */
#define MODEM_CONTROL_NODE MODEM_CONTROL_CODE(0xA05u)

/* Sent to a node, not to the control device: fails for a node that refuses to be opened. Not noted
 * in the journal. Wine 8 hands out a handle although the driver has refused, so somebody must ask.
 */
#define MODEM_NODE_MAY_BE_OPEN MODEM_CONTROL_CODE(0xA10u)

/* The faces a modem can show. Any number may be used; these three have names. */
#define PERSONALITY_OFF 0u
#define PERSONALITY_STORAGE 1u
#define PERSONALITY_MODEM 2u

#define MODEM_LIMIT 4u
#define NODE_LIMIT 32u
#define ID_LENGTH 200u /* characters of a device or instance id, the final zero included */

/* The driver is C. NOLINTBEGIN(modernize-use-using) */
typedef struct {
    ULONG Modem;
    ULONG Personality;
} ModemWish;

typedef struct {
    ULONG Personality; /* what it shows now */
    ULONG Wanted;      /* what it will show when it is settled */
    ULONG Settled;     /* 1: no change and no arrival is still to come */
    ULONG Plugged;     /* nodes on the bus now */
    ULONG Scanning;    /* 1: the driver is at work, on whichever modem */
} ModemState;

typedef struct {
    ULONG Modem;
    ULONG Personality;
    ULONG Plugged;
    WCHAR InstanceId[2 * ID_LENGTH];
} NodeState;
/* NOLINTEND(modernize-use-using) */
