/* What happens to the modems in the course of time: one thread sleeps until the next thing is due
 * (a personality goes or comes, a node arrives or leaves) or until it is woken by a wish. */
#pragma once

#include "kernel.h"

NTSTATUS StartTimeline(void);
/* Returns when the thread has ended. */
void StopTimeline(void);

/* All modems show their first personality. */
void StartModems(void);

/* The modem's nodes go after `delay` milliseconds, and those of the wished personality come after
 * the modem's own GoneDelay, each with its own delay. The same personality again is allowed: the
 * modem then goes and comes back. Returns at once; FALSE when no such modem is described. */
BOOLEAN WishPersonality(ULONG modem, ULONG personality, ULONG delay);

/* The node goes, and stays away until the next scan. Returns at once. */
void WishNodeAway(ULONG node);

/* Nodes that were taken away, or whose registry key was deleted, come back. Returns at once. */
void WishScan(void);

BOOLEAN DescribeState(ULONG modem, ModemState* state);
