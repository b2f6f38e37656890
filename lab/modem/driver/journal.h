/* The file in which the driver notes what happened to its modems: one line per event, with the
 * time (UTC) in front. Tests read it to learn what the program under test really sent. */
#pragma once

#include "kernel.h"

#define JOURNAL_PATH_LENGTH 260u

/* Native path of the journal, for example "\??\C:\vmodem.log". Cut when it is too long. */
void SetJournalPath(const WCHAR* path);

/* Appends one line, at most 600 bytes; narrow printf rules, "%S" is a wide string. */
void WriteJournal(const char* format, ...);

/* Appends `what`, the instance id and up to 128 bytes in hexadecimal as one line. */
void WriteJournalBytes(const char* what, const WCHAR* instanceId, const UCHAR* bytes, ULONG count);
