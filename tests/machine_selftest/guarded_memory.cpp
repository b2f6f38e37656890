// The machine's own tests: memory that ends the run when it is misused. The misuse happens in a
// process of its own.
#include "machine/guarded_memory.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

#include <memory>
#include <new>

using namespace machine;

TEST_CASE("An ordered new(nothrow) gives null, the others memory") {
    Machine m;
    FailNothrowNew(2);
    for (int call = 1; call <= 3; ++call) {
        const std::unique_ptr<char[]> block(new (std::nothrow) char[8]);
        CHECK((block == nullptr) == (call == 2));
    }
}

#ifdef GUARD_MEMORY

namespace {

// Runs one of the skipped cases below; its exit code.
DWORD RunAlone(const std::wstring& testCase) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring command = L"\"" + std::wstring(path) + L"\" --no-skip=true --test-case=\"" +
                           testCase + L"\" --out=NUL";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    REQUIRE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                           &startup, &process) != FALSE);
    WaitForSingleObject(process.hProcess, 60'000);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

// Not seen through by the compiler.
volatile char* Seen(char* memory) {
    static char* volatile place;
    place = memory;
    return place;
}

} // namespace

TEST_CASE("Alone: memory used as it should be" * doctest::skip()) {
    Machine m;
    for (std::size_t size : {1U, 15U, 16U, 4080U, 4096U, 100'000U}) {
        const auto block = std::make_unique<char[]>(size);
        Seen(block.get())[size - 1] = 'x';
    }
}
TEST_CASE("Alone: a write behind the end" * doctest::skip()) {
    Machine m;
    const auto block = std::make_unique<char[]>(32);
    Seen(block.get())[32] = 'x';
}
TEST_CASE("Alone: a write behind an odd end" * doctest::skip()) {
    Machine m;
    auto block = std::make_unique<char[]>(5);
    Seen(block.get())[5] = 'x';
    block.reset();
}
TEST_CASE("Alone: a read after delete" * doctest::skip()) {
    Machine m;
    auto block = std::make_unique<char[]>(32);
    volatile char* seen = Seen(block.get());
    block.reset();
    CHECK(seen[0] == 'x');
}

TEST_CASE("An overrun and a use after delete end the process") {
    CHECK(RunAlone(L"Alone: memory used as it should be") == 0);
    CHECK(RunAlone(L"Alone: a write behind the end") != 0);
    CHECK(RunAlone(L"Alone: a write behind an odd end") != 0);
    CHECK(RunAlone(L"Alone: a read after delete") != 0);
}

#endif
