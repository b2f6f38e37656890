#include "rehearsal/handles.h"

#include "rehearsal/imports.h"

#include <set>

namespace rehearsal {

namespace {

// Runs may be broken off by an exception that passes the program's owners; they close what they
// hold, so that nothing stays here.
std::map<HANDLE, std::unique_ptr<HandleContent>>& Open() {
    static std::map<HANDLE, std::unique_ptr<HandleContent>> open;
    return open;
}

BOOL WINAPI Close(HANDLE handle) {
    CloseStageHandle(handle);
    return TRUE;
}

} // namespace

HANDLE OpenHandle(std::unique_ptr<HandleContent> content) {
    HandleContent* const handle = content.get();
    Open()[handle] = std::move(content);
    return handle;
}

void CloseStageHandle(HANDLE handle) {
    Open().erase(handle);
}

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(CloseHandle, Close);
