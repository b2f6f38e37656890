#include "journal.h"

#define LINE_SIZE 700
#define BYTES_SHOWN 128u

static WCHAR journalPath[JOURNAL_PATH_LENGTH] = L"\\??\\C:\\vmodem.log";

void SetJournalPath(const WCHAR* path) {
    ULONG i = 0;
    for (; i < JOURNAL_PATH_LENGTH - 1 && path[i] != 0; ++i) {
        journalPath[i] = path[i];
    }
    journalPath[i] = 0;
}

static int PutTime(char* line, size_t size) {
    LARGE_INTEGER now;
    TIME_FIELDS at;
    KeQuerySystemTime(&now);
    RtlTimeToTimeFields(&now, &at);
    return _snprintf(line, size, "%04d-%02d-%02d %02d:%02d:%02d.%03d ", at.Year, at.Month, at.Day,
                     at.Hour, at.Minute, at.Second, at.Milliseconds);
}

/* Opened for each line: the file can be read or deleted meanwhile, and nothing is lost when the
 * session is killed. */
static void Append(const char* line, ULONG size) {
    HANDLE file;
    IO_STATUS_BLOCK io;
    OBJECT_ATTRIBUTES attributes;
    UNICODE_STRING path;
    RtlInitUnicodeString(&path, journalPath);
    InitializeObjectAttributes(&attributes, &path, OBJ_CASE_INSENSITIVE | OBJ_KERNEL_HANDLE, NULL,
                               NULL);
    if (!NT_SUCCESS(ZwCreateFile(&file, FILE_APPEND_DATA | SYNCHRONIZE, &attributes, &io, NULL,
                                 FILE_ATTRIBUTE_NORMAL,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                 FILE_OPEN_IF, FILE_SYNCHRONOUS_IO_NONALERT, NULL, 0))) {
        return;
    }
    ZwWriteFile(file, NULL, NULL, NULL, &io, (void*)(ULONG_PTR)line, size, NULL, NULL);
    ZwClose(file);
}

/* Ends the line that begins at `line` and holds `used` characters, or as many as fitted. */
static void Finish(char* line, int used) {
    if (used < 0 || used > LINE_SIZE - 2) {
        used = LINE_SIZE - 2;
    }
    line[used++] = '\n';
    Append(line, (ULONG)used);
}

void WriteJournal(const char* format, ...) {
    char line[LINE_SIZE];
    va_list arguments;
    const int front = PutTime(line, LINE_SIZE);
    int text;
    va_start(arguments, format);
    text = _vsnprintf(line + front, (size_t)(LINE_SIZE - 2 - front), format, arguments);
    va_end(arguments);
    Finish(line, text < 0 ? -1 : front + text);
}

void WriteJournalBytes(const char* what, const WCHAR* instanceId, const UCHAR* bytes, ULONG count) {
    char line[LINE_SIZE];
    const int front = PutTime(line, LINE_SIZE);
    const int room = LINE_SIZE - 2 - front - 3 * (int)BYTES_SHOWN;
    int used = _snprintf(line + front, (size_t)room, "%s %S:", what, instanceId);
    ULONG i;
    used = front + (used < 0 ? room : used);
    for (i = 0; i < count && i < BYTES_SHOWN; ++i) {
        used += _snprintf(line + used, 4, " %02x", bytes[i]);
    }
    Finish(line, used);
}
