#include "timeline.h"

#include "description.h"
#include "journal.h"
#include "nodes.h"
#include "presence.h"

#define NEVER 0x7FFFFFFFFFFFFFFFLL

NTSYSAPI NTSTATUS NTAPI ZwWaitForSingleObject(HANDLE object, BOOLEAN alertable,
                                              LARGE_INTEGER* timeout);

typedef enum {
    STAYING, /* shows `personality`; nodes arrive and leave in their own time */
    LEAVING, /* the same until `due`, when all nodes go */
    GONE     /* nothing is plugged; `wanted` comes at `due` */
} Phase;

/* Written by wishes from any thread and by the timeline's own, always under `lock`. */
typedef struct {
    Phase phase;
    ULONG personality;
    ULONG wanted;
    LONGLONG due;   /* of the phase */
    LONGLONG since; /* when `personality` came */
} Modem;

typedef struct {
    BOOLEAN hasArrived; /* since its personality came */
    BOOLEAN hasLeft;
    BOOLEAN isTakenAway; /* until the next scan */
} NodeHistory;

static Modem modems[MODEM_LIMIT];
static NodeHistory histories[NODE_LIMIT];
static FAST_MUTEX lock;
static KEVENT wake;
static HANDLE threadHandle;
static volatile BOOLEAN isStopping;
static volatile BOOLEAN isScanWished;
static volatile BOOLEAN isWorking;

/* Since 1601, for differences. */
static LONGLONG Milliseconds(void) {
    LARGE_INTEGER time;
    KeQuerySystemTime(&time);
    return time.QuadPart / 10000;
}

/* ---- what is due when (called under `lock`) -------------------------------------------------- */

static BOOLEAN BelongsNow(ULONG node) {
    const NodeDescription* const description = &nodeDescriptions[node];
    const Modem* const modem = &modems[description->modem];
    return description->isDescribed && modemDescriptions[description->modem].isDescribed &&
           modem->phase != GONE && modem->personality == description->personality;
}

static LONGLONG ArrivalOf(ULONG node) {
    const NodeDescription* const description = &nodeDescriptions[node];
    if (!BelongsNow(node) || description->neverArrives || histories[node].hasArrived ||
        histories[node].isTakenAway) {
        return NEVER;
    }
    return modems[description->modem].since + description->arrivesAfter;
}

static LONGLONG DepartureOf(ULONG node) {
    const NodeDescription* const description = &nodeDescriptions[node];
    if (!BelongsNow(node) || description->leavesAfter == 0 || histories[node].hasLeft) {
        return NEVER;
    }
    return modems[description->modem].since + description->leavesAfter;
}

static LONGLONG ChangeOf(ULONG modem) {
    return modems[modem].phase == STAYING ? NEVER : modems[modem].due;
}

static LONGLONG Earlier(LONGLONG a, LONGLONG b) {
    return a < b ? a : b;
}

static LONGLONG NextDue(void) {
    LONGLONG next = NEVER;
    ULONG i;
    ExAcquireFastMutex(&lock);
    for (i = 0; i < MODEM_LIMIT; ++i) {
        next = Earlier(next, ChangeOf(i));
    }
    for (i = 0; i < NODE_LIMIT; ++i) {
        next = Earlier(next, Earlier(ArrivalOf(i), DepartureOf(i)));
    }
    ExReleaseFastMutex(&lock);
    return next;
}

/* ---- doing it (the timeline's thread only) --------------------------------------------------- */

static void Take(ULONG node) {
    UnplugNode(node);
    AnnounceNodes();
}

static void Bring(ULONG node) {
    PlugNode(node);
    AnnounceNodes();
}

static void TakeAllOf(ULONG modem) {
    ULONG i;
    for (i = 0; i < NODE_LIMIT; ++i) {
        if (nodeDescriptions[i].modem == modem) {
            UnplugNode(i);
        }
    }
    AnnounceNodes();
}

static void ForgetHistoryOf(ULONG modem) {
    ULONG i;
    for (i = 0; i < NODE_LIMIT; ++i) {
        if (nodeDescriptions[i].modem == modem) {
            memset(&histories[i], 0, sizeof(histories[i]));
        }
    }
}

/* Ends the phase when its time has come, and tells which phase it was. */
static Phase TurnPhase(ULONG number, LONGLONG now) {
    Modem* const modem = &modems[number];
    Phase ended = STAYING;
    ExAcquireFastMutex(&lock);
    if (modem->phase != STAYING && modem->due <= now) {
        ended = modem->phase;
        if (ended == LEAVING) {
            modem->phase = GONE;
            modem->due = now + modemDescriptions[number].goneDelay;
        } else {
            modem->phase = STAYING;
            modem->personality = modem->wanted;
            modem->since = now;
            ForgetHistoryOf(number);
        }
    }
    ExReleaseFastMutex(&lock);
    return ended;
}

static void TurnModem(ULONG number, LONGLONG now) {
    const Phase ended = TurnPhase(number, now);
    if (ended == LEAVING) {
        TakeAllOf(number);
        WriteJournal("modem %u: personality %u is gone", number, modems[number].personality);
    } else if (ended == GONE) {
        WriteJournal("modem %u: personality %u comes", number, modems[number].personality);
    }
}

static BOOLEAN IsDue(LONGLONG (*timeOf)(ULONG), ULONG node, LONGLONG now, BOOLEAN* done) {
    BOOLEAN due;
    ExAcquireFastMutex(&lock);
    due = timeOf(node) <= now;
    *done = due || *done;
    ExReleaseFastMutex(&lock);
    return due;
}

/* Of several nodes that are due at once the one with the lowest number goes first. */
static void TurnNode(ULONG node, LONGLONG now) {
    if (IsDue(ArrivalOf, node, now, &histories[node].hasArrived)) {
        Bring(node);
    }
    if (IsDue(DepartureOf, node, now, &histories[node].hasLeft)) {
        Take(node);
    }
}

/* A node whose key was deleted while it was plugged is dropped first: the system would not look at
 * it again as long as it finds the same device object in the list. */
static void DropDeletedNodes(void) {
    ULONG i;
    for (i = 0; i < NODE_LIMIT; ++i) {
        if (NodeIsPlugged(i) && !NodeKeyExists(i)) {
            UnplugNode(i);
            histories[i].hasArrived = histories[i].hasLeft;
        }
    }
    AnnounceNodes();
}

static void Scan(void) {
    ULONG i;
    WriteJournal("scan");
    DropDeletedNodes();
    ExAcquireFastMutex(&lock);
    for (i = 0; i < NODE_LIMIT; ++i) {
        if (histories[i].isTakenAway) {
            histories[i].isTakenAway = FALSE;
            histories[i].hasArrived = histories[i].hasLeft;
        }
    }
    ExReleaseFastMutex(&lock);
}

static void TakeUnwantedNodes(void) {
    ULONG i;
    for (i = 0; i < NODE_LIMIT; ++i) {
        if (histories[i].isTakenAway && NodeIsPlugged(i)) {
            Take(i);
        }
    }
}

static void DoWhatIsDue(void) {
    const LONGLONG now = Milliseconds();
    ULONG i;
    TakeUnwantedNodes();
    if (isScanWished) {
        isScanWished = FALSE;
        Scan();
    }
    for (i = 0; i < MODEM_LIMIT; ++i) {
        TurnModem(i, now);
    }
    for (i = 0; i < NODE_LIMIT; ++i) {
        TurnNode(i, now);
    }
}

/* Sleeps until something is due or wished. */
static void WaitForWork(void) {
    const LONGLONG due = NextDue();
    LARGE_INTEGER timeout;
    if (due == NEVER) {
        KeWaitForSingleObject(&wake, Executive, KernelMode, FALSE, NULL);
        return;
    }
    timeout.QuadPart = Earlier(0, Milliseconds() - due) * 10000; /* negative: from now on */
    KeWaitForSingleObject(&wake, Executive, KernelMode, FALSE, &timeout);
}

static void NTAPI Run(void* context) {
    (void)context;
    while (!isStopping) {
        isWorking = FALSE;
        WaitForWork();
        isWorking = TRUE;
        if (!isStopping) {
            DoWhatIsDue();
        }
    }
    PsTerminateSystemThread(STATUS_SUCCESS);
}

/* ---- from outside ---------------------------------------------------------------------------- */

NTSTATUS StartTimeline(void) {
    ULONG i;
    for (i = 0; i < MODEM_LIMIT; ++i) {
        modems[i].phase = GONE; /* until the bus is started */
        modems[i].due = NEVER;
    }
    ExInitializeFastMutex(&lock);
    KeInitializeEvent(&wake, SynchronizationEvent, FALSE);
    return PsCreateSystemThread(&threadHandle, THREAD_ALL_ACCESS, NULL, NULL, NULL, Run, NULL);
}

static void Wake(void) {
    KeSetEvent(&wake, IO_NO_INCREMENT, FALSE);
}

void StopTimeline(void) {
    LARGE_INTEGER fiveSeconds;
    fiveSeconds.QuadPart = -5LL * 10000000;
    isStopping = TRUE;
    Wake();
    if (threadHandle != NULL) {
        ZwWaitForSingleObject(threadHandle, FALSE, &fiveSeconds);
        ZwClose(threadHandle);
    }
}

static void Expect(ULONG number, Phase phase, ULONG personality, ULONG delay) {
    Modem* const modem = &modems[number];
    ExAcquireFastMutex(&lock);
    modem->phase = phase;
    modem->wanted = personality;
    modem->due = Milliseconds() + delay;
    ExReleaseFastMutex(&lock);
    Wake();
}

void StartModems(void) {
    ULONG i;
    for (i = 0; i < MODEM_LIMIT; ++i) {
        if (modemDescriptions[i].isDescribed) {
            Expect(i, GONE, modemDescriptions[i].startPersonality, 0);
        }
    }
}

BOOLEAN WishPersonality(ULONG modem, ULONG personality, ULONG delay) {
    if (modem >= MODEM_LIMIT || !modemDescriptions[modem].isDescribed) {
        return FALSE;
    }
    Expect(modem, LEAVING, personality, delay);
    return TRUE;
}

void WishNodeAway(ULONG node) {
    ExAcquireFastMutex(&lock);
    histories[node].isTakenAway = TRUE;
    ExReleaseFastMutex(&lock);
    Wake();
}

void WishScan(void) {
    isScanWished = TRUE;
    Wake();
}

static BOOLEAN HasArrivalsOpen(ULONG modem) {
    ULONG i;
    for (i = 0; i < NODE_LIMIT; ++i) {
        if (nodeDescriptions[i].modem == modem && ArrivalOf(i) != NEVER) {
            return TRUE;
        }
    }
    return FALSE;
}

BOOLEAN DescribeState(ULONG number, ModemState* state) {
    const Modem* const modem = &modems[number];
    if (number >= MODEM_LIMIT || !modemDescriptions[number].isDescribed) {
        return FALSE;
    }
    ExAcquireFastMutex(&lock);
    state->Personality = modem->phase == GONE ? PERSONALITY_OFF : modem->personality;
    state->Wanted = modem->phase == STAYING ? modem->personality : modem->wanted;
    state->Settled = modem->phase == STAYING && !HasArrivalsOpen(number);
    ExReleaseFastMutex(&lock);
    state->Scanning = isWorking || isScanWished;
    state->Settled = state->Settled && !state->Scanning;
    state->Plugged = CountPluggedNodes(number);
    return TRUE;
}
