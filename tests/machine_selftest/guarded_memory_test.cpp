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

constexpr const wchar_t* UseVariable = L"SETUP_TESTS_MEMORY_USE";

// Runs the case that uses memory in a process of its own, in the given way; its exit code.
DWORD RunAlone(const wchar_t* use) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring command = L"\"" + std::wstring(path) +
                           L"\" --test-case=\"Memory is used as it should be*\" --out=NUL";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    SetEnvironmentVariableW(UseVariable, use);
    REQUIRE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                           &startup, &process) != FALSE);
    SetEnvironmentVariableW(UseVariable, nullptr);
    WaitForSingleObject(process.hProcess, 60'000);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

std::wstring UseAskedFor() {
    wchar_t use[32] = {};
    GetEnvironmentVariableW(UseVariable, use, 32);
    return use;
}

// Not seen through by the compiler.
volatile char* Seen(char* memory) {
    static char* volatile place;
    place = memory;
    return place;
}

} // namespace

TEST_CASE("Memory is used as it should be, unless the environment asks for a misuse") {
    Machine m;
    for (std::size_t size : {1U, 15U, 16U, 4080U, 4096U, 100'000U}) {
        const auto block = std::make_unique<char[]>(size);
        volatile char* const last = Seen(block.get()) + size - 1;
        *last = 'x';
        CHECK(*last == 'x');
    }
    const std::wstring use = UseAskedFor();
    auto block = std::make_unique<char[]>(32);
    auto oddBlock = std::make_unique<char[]>(5);
    volatile char* const seen = Seen(block.get());
    if (use == L"overrun") {
        seen[32] = 'x';
    } else if (use == L"odd overrun") {
        Seen(oddBlock.get())[5] = 'x';
        oddBlock.reset();
    } else if (use == L"read after delete") {
        block.reset();
        CHECK(seen[0] == 'x');
    }
}

TEST_CASE("An overrun and a use after delete end the process") {
    CHECK(RunAlone(L"") == 0);
    CHECK(RunAlone(L"overrun") != 0);
    CHECK(RunAlone(L"odd overrun") != 0);
    CHECK(RunAlone(L"read after delete") != 0);
}

#endif
