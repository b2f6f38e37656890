// launch ENDFILE PROGRAM [ARGUMENT...]: runs a program to its end and writes its exit status, all
// 32 bits of it, into ENDFILE. What the host sees of a Wine program's end is one byte: a process
// that ended itself with status 0xC0000417 would look like one that returned 23.
//
// The program ends with this one: killing this process from the host leaves nothing running.
#include "platform/owners.h"

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

constexpr int NotStarted = 127;

// Where the next argument of a command line begins. Quotes hold blanks together; none of the lab's
// paths has a quote inside.
wchar_t* BehindArgument(wchar_t* text) {
    bool quoted = false;
    while (*text != L'\0' && (quoted || (*text != L' ' && *text != L'\t'))) {
        quoted = quoted != (*text == L'"');
        ++text;
    }
    while (*text == L' ' || *text == L'\t') {
        ++text;
    }
    return text;
}

// A job that ends its processes when its last handle goes, also when this process is killed.
HANDLE MakeJob() {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

bool Start(wchar_t* commandLine, PROCESS_INFORMATION& made) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    return CreateProcessW(nullptr, commandLine, nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                          nullptr, &startup, &made) != FALSE;
}

// Where addresses are drawn by lot, Wine ends a new process now and then before its program begins,
// for want of a page of its own, and tells ERROR_INTERNAL_ERROR: nothing has run then, and it is
// tried once more.
bool StartOrTryAgain(wchar_t* commandLine, PROCESS_INFORMATION& made) {
    std::wstring copy = commandLine; // CreateProcessW may write into it
    if (Start(copy.data(), made)) {
        return true;
    }
    if (GetLastError() != ERROR_INTERNAL_ERROR) {
        return false;
    }
    std::fprintf(stderr, "launch: no process could be made, tried again\n");
    return Start(commandLine, made);
}

// False leaves the reason in the last error.
bool Run(wchar_t* commandLine, DWORD& status) {
    const KernelObjectOwner job(MakeJob());
    PROCESS_INFORMATION made = {};
    if (!StartOrTryAgain(commandLine, made)) {
        return false;
    }
    const KernelObjectOwner process(made.hProcess);
    const KernelObjectOwner thread(made.hThread);
    AssignProcessToJobObject(job.Get(), process.Get());
    ResumeThread(thread.Get());
    WaitForSingleObject(process.Get(), INFINITE);
    return GetExitCodeProcess(process.Get(), &status) != FALSE;
}

bool WriteStatus(const wchar_t* path, DWORD status) {
    std::FILE* const file = _wfopen(path, L"wb");
    if (file == nullptr) {
        return false;
    }
    std::fprintf(file, "0x%08lX\n", status);
    return std::fclose(file) == 0;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count < 3) {
        std::fputs("launch ENDFILE PROGRAM [ARGUMENT...]\n", stderr);
        return NotStarted;
    }
    std::wstring commandLine = BehindArgument(BehindArgument(GetCommandLineW()));
    DWORD status = 0;
    if (!Run(commandLine.data(), status)) {
        std::fprintf(stderr, "launch: %ls cannot be started, error %lu\n", arguments[2],
                     GetLastError());
        return NotStarted;
    }
    return WriteStatus(arguments[1], status) ? 0 : NotStarted;
}
