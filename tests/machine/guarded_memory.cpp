#include "machine/guarded_memory.h"

#include "platform/platform.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::atomic<bool> Guarding{false};
std::atomic<int> FailingNothrow{0};
std::atomic<int> GuardedOneIn{1};
thread_local int Unguarded = 0;

} // namespace

namespace machine {

UnguardedScope::UnguardedScope() {
    ++Unguarded;
}
UnguardedScope::~UnguardedScope() {
    --Unguarded;
}

void GuardMemory(bool guard) {
    Guarding = guard;
    GuardedOneIn = 1;
}

void GuardSome() {
    GuardedOneIn = 7;
}

void FailNothrowNew(int k) {
    FailingNothrow = k;
}

} // namespace machine

#ifdef GUARD_MEMORY

namespace {

constexpr std::size_t Page = 4096;
constexpr std::size_t Alignment = 16;
constexpr std::size_t ArenaSize = std::size_t{64} * 1024 * 1024 * 1024;
constexpr std::size_t LargestGuarded = 1024 * 1024;
// Each takes two of the mappings that the host system allows a process (65,530 on Linux).
constexpr int MostAtATime = 12'000;
constexpr unsigned char Slack = 0xFD;

// At the start of each guarded block's first page.
struct Header {
    std::size_t Size;
    std::size_t Bytes; // of all its pages
};

// Address space only; the pages get memory one block at a time.
unsigned char* Arena() {
    static auto* const arena =
        static_cast<unsigned char*>(VirtualAlloc(nullptr, ArenaSize, MEM_RESERVE, PAGE_READWRITE));
    return arena;
}

std::atomic<std::size_t> nextOffset{0};
std::atomic<int> alive{0};

std::size_t RoundUp(std::size_t size, std::size_t unit) {
    return (size + unit - 1) / unit * unit;
}

bool IsGuarded(const void* memory) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const auto start = reinterpret_cast<std::uintptr_t>(Arena());
    return start != 0 && address >= start && address < start + ArenaSize;
}

// True for those of the blocks that have their turn. The count goes on from run to run.
bool HasItsTurn() {
    static std::atomic<int> blocks{0};
    return ++blocks % GuardedOneIn == 0;
}

// Null when the block should be an ordinary one.
void* AllocateGuarded(std::size_t size) {
    if (!Guarding || Unguarded != 0 || size > LargestGuarded || Arena() == nullptr ||
        alive >= MostAtATime || !HasItsTurn()) {
        return nullptr;
    }
    const std::size_t room = RoundUp(size, Alignment);
    const std::size_t bytes = RoundUp(room + sizeof(Header), Page);
    // One page more: nobody may touch it.
    const std::size_t offset = nextOffset.fetch_add(bytes + Page);
    if (offset + bytes + Page > ArenaSize) {
        return nullptr;
    }
    auto* pages = static_cast<unsigned char*>(
        VirtualAlloc(Arena() + offset, bytes, MEM_COMMIT, PAGE_READWRITE));
    if (pages == nullptr) {
        return nullptr;
    }
    ++alive;
    new (pages) Header{size, bytes};
    unsigned char* block = pages + bytes - room;
    std::memset(block + size, Slack, room - size);
    return block;
}

void FreeGuarded(void* memory) {
    auto* block = static_cast<unsigned char*>(memory);
    // The header ends in the block's own page or right before it.
    const auto before = reinterpret_cast<std::uintptr_t>(block) - sizeof(Header);
    unsigned char* pages = block - sizeof(Header) - before % Page;
    const auto* header = reinterpret_cast<const Header*>(pages);
    for (std::size_t index = header->Size; index < RoundUp(header->Size, Alignment); ++index) {
        if (block[index] != Slack) {
            __builtin_trap();
        }
    }
    --alive;
    VirtualFree(pages, header->Bytes, MEM_DECOMMIT);
}

void* Allocate(std::size_t size) {
    if (void* guarded = AllocateGuarded(size); guarded != nullptr) {
        return guarded;
    }
    if (void* plain = std::malloc(size == 0 ? 1 : size); plain != nullptr) {
        return plain;
    }
    throw std::bad_alloc();
}

void Free(void* memory) noexcept {
    if (memory == nullptr) {
        return;
    }
    if (IsGuarded(memory)) {
        FreeGuarded(memory);
    } else {
        std::free(memory);
    }
}

} // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete[](void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    Free(memory);
}

#endif

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (FailingNothrow > 0 && --FailingNothrow == 0) {
        return nullptr;
    }
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& kind) noexcept {
    return operator new(size, kind);
}
