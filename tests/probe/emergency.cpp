// A program that needs an emergency end, of the kind that its first argument names. Linked with
// what the shipped program has for that; comes back with 0 when nothing ended it.
#include "platform/platform.h"

#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

DWORD WINAPI ThrowInThread(LPVOID /*parameter*/) {
    throw 1;
}

void WaitForThread() {
    const HANDLE thread = CreateThread(nullptr, 0, ThrowInThread, nullptr, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

int Fall(std::string_view kind) {
    const std::wstring text = L"text";
    if (kind == "length") {
        std::wstring longest;
        longest.reserve(std::numeric_limits<std::size_t>::max());
    } else if (kind == "memory") {
        std::vector<std::wstring> list;
        list.reserve(list.max_size() / 2);
    } else if (kind == "position") {
        return static_cast<int>(text.substr(5).size());
    } else if (kind == "thread") {
        WaitForThread();
    } else if (kind == "exception") {
        throw std::string("what no one catches");
    }
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    return count < 2 ? 2 : Fall(arguments[1]);
}
