// SPDX-License-Identifier: MIT
#include "framework/movable_memory_native.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "framework/movable_memory.h"

namespace kfx {
namespace {

// The bytes of a block or table, and where they lie.
struct Bytes {
    void* address = nullptr;
    size_t size = 0;
    void* pages = nullptr;  // of a mapping of its own, the untouchable pages among them; null: from the heap
    size_t mapped = 0;      // bytes between those two pages
    size_t slack = 0;       // bytes of these on the side without the block
    bool guarded = false;   // whether the slack holds the marker
};

// A handle points at this record and never at the bytes, so code that forgets to lock is caught at once.
struct Block {
    Bytes bytes;
    size_t locks;
};

// Stands before a fixed table, whose address is the caller's.
struct alignas(std::max_align_t) FixedHeader {
    Bytes bytes;  // of the header and the table
};

// Which attempts of one kind are refused, counted from 1; 0: none.
struct Refusals {
    size_t number;
    size_t from;
};

std::mutex mutex;             // guards all of these, and the locks of every block
MemoryCounts counts;          // written by every function below
Refusals allocationRefusals;  // written by the functions that tests call
Refusals lockRefusals;
Refusals sizeRefusals;
size_t uncounted;  // how many UncountedMemory live
GuardPages guardPages;

using Guard = std::lock_guard<std::mutex>;

// The caller holds the mutex.
bool IsRefused(const Refusals& refusals, size_t* attempts) {
    if (uncounted) return false;
    const size_t number = ++*attempts;
    return number == refusals.number || (refusals.from && number >= refusals.from);
}

bool IsAllocationRefused(size_t bytes) {
    const Guard guard(mutex);
    if (!uncounted && bytes > counts.largestBytes) counts.largestBytes = bytes;
    return IsRefused(allocationRefusals, &counts.allocations);
}

#if defined(__SANITIZE_ADDRESS__)
// The address sanitizer marks every byte of a block when it is allocated and when it is freed. For the table
// of all colours, of which a small picture uses a few pages, that is a hundred times the work of the build
// under test. Such large blocks get a mapping of their own. It ends at a page that must not be touched, at
// most 15 bytes behind the block.
constexpr size_t kMappedFrom = size_t{8} << 20;
#else
constexpr size_t kMappedFrom = SIZE_MAX;
#endif
constexpr size_t kPage = 4096;
constexpr int kSlackMarker = 0xA5;  // of what a guarded mapping holds beside its block

// What the block leaves free of its mapping, before or behind it.
uint8_t* SlackOf(const Bytes& bytes) {
    auto* const inside = static_cast<uint8_t*>(bytes.pages) + kPage;
    return inside == bytes.address ? inside + bytes.size : inside;
}

size_t RoundUp(size_t size, size_t unit) { return (size + unit - 1) / unit * unit; }

// A mapping between two pages that must not be touched. Its block ends at the page behind, but for what the
// alignment takes, or begins at the page before.
bool Map(size_t size, GuardPages side, size_t alignment, Bytes* bytes) {
    if (size > SIZE_MAX / 2) return false;
    const size_t mapped = RoundUp(size, kPage);
    void* pages = mmap(nullptr, mapped + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) return false;
    auto* const inside = static_cast<char*>(pages) + kPage;
    if (mprotect(inside, mapped, PROT_READ | PROT_WRITE) != 0) {
        munmap(pages, mapped + 2 * kPage);
        return false;
    }
    const size_t before = side == GuardPages::Before ? 0 : mapped - RoundUp(size, alignment);
    *bytes = {.address = inside + before,
              .size = size,
              .pages = pages,
              .mapped = mapped,
              .slack = side == GuardPages::Before ? mapped - size : before};
    return true;
}

// With guard pages the block is aligned as told only, so that nothing is between it and the page.
bool AllocateBytes(size_t size, size_t alignment, Bytes* bytes) {
    GuardPages side;
    {
        const Guard guard(mutex);
        side = guardPages;
    }
    if (side == GuardPages::None && size >= kMappedFrom) return Map(size, GuardPages::Behind, 16, bytes);
    if (side == GuardPages::None) {
        *bytes = {.address = std::calloc(size, 1), .size = size};
        return bytes->address != nullptr;
    }
    if (!Map(size, side, alignment, bytes)) return false;
    std::memset(SlackOf(*bytes), kSlackMarker, bytes->slack);
    bytes->guarded = true;
    const Guard guard(mutex);
    ++counts.guardedBlocks;
    return true;
}

size_t CountSpoiledSlack(const Bytes& bytes) {
    const uint8_t* const slack = SlackOf(bytes);
    size_t spoiled = 0;
    for (size_t i = 0; i < bytes.slack; ++i) spoiled += slack[i] != kSlackMarker;
    return spoiled;
}

void FreeBytes(const Bytes& bytes) {
    if (!bytes.pages) {
        std::free(bytes.address);
        return;
    }
    if (const size_t spoiled = bytes.guarded ? CountSpoiledSlack(bytes) : 0) {
        const Guard guard(mutex);
        counts.spoiledSlack += spoiled;
    }
    munmap(bytes.pages, bytes.mapped + 2 * kPage);
}

// The heap grows most blocks where they are: a list of thousands of frames, which grows by one at a time, is
// not copied for each. False: the bytes are as before.
bool ResizeBytes(size_t size, Bytes* bytes) {
    const bool onHeap = !bytes->pages && size < kMappedFrom;
    if (onHeap) {
        void* const moved = std::realloc(bytes->address, size);
        if (!moved) return false;
        if (size > bytes->size) std::memset(static_cast<char*>(moved) + bytes->size, 0, size - bytes->size);
        bytes->address = moved;
        bytes->size = size;
        return true;
    }
    Bytes moved;
    if (!AllocateBytes(size, 1, &moved)) return false;
    std::memcpy(moved.address, bytes->address, std::min(size, bytes->size));
    FreeBytes(*bytes);
    *bytes = moved;
    return true;
}

// The caller holds the mutex.
void Grow(size_t bytes) {
    counts.liveBytes += bytes;
    if (counts.liveBytes > counts.peakBytes) counts.peakBytes = counts.liveBytes;
}

}  // namespace

MemoryHandle AllocateMemory(size_t bytes) {
    if (IsAllocationRefused(bytes)) return nullptr;
    auto* block = static_cast<Block*>(std::malloc(sizeof(Block)));
    if (!block) return nullptr;
    block->locks = 0;
    if (!AllocateBytes(bytes ? bytes : 1, 1, &block->bytes)) {
        std::free(block);
        return nullptr;
    }
    const Guard guard(mutex);
    ++counts.liveBlocks;
    Grow(block->bytes.size);
    return block;
}

void* LockMemory(MemoryHandle memory) {
    const Guard guard(mutex);
    if (!memory || IsRefused(lockRefusals, &counts.locks)) return nullptr;
    auto* block = static_cast<Block*>(memory);
    if (block->locks++ == 0) ++counts.lockedBlocks;
    return block->bytes.address;
}

void UnlockMemory(MemoryHandle memory) {
    auto* block = static_cast<Block*>(memory);
    if (!block) return;
    const Guard guard(mutex);
    if (!block->locks)
        ++counts.strayUnlocks;
    else if (--block->locks == 0)
        --counts.lockedBlocks;
}

MemoryHandle ResizeMemory(MemoryHandle memory, size_t bytes) {
    if (!memory || IsAllocationRefused(bytes)) return nullptr;
    auto* block = static_cast<Block*>(memory);
    const size_t before = block->bytes.size;
    if (!ResizeBytes(bytes ? bytes : 1, &block->bytes)) return nullptr;
    const Guard guard(mutex);
    counts.liveBytes -= before;
    Grow(block->bytes.size);
    return block;
}

void FreeMemory(MemoryHandle memory) {
    if (!memory) return;
    auto* block = static_cast<Block*>(memory);
    {
        const Guard guard(mutex);
        --counts.liveBlocks;
        counts.liveBytes -= block->bytes.size;
        if (block->locks) {
            ++counts.lockedFrees;
            --counts.lockedBlocks;
        }
    }
    FreeBytes(block->bytes);
    std::free(block);
}

void* AllocateFixedTable(size_t bytes) {
    if (bytes > SIZE_MAX / 2 || IsAllocationRefused(bytes)) return nullptr;
    Bytes table;
    if (!AllocateBytes(sizeof(FixedHeader) + bytes, alignof(FixedHeader), &table)) return nullptr;
    auto* header = static_cast<FixedHeader*>(table.address);
    header->bytes = table;
    const Guard guard(mutex);
    ++counts.liveBlocks;
    Grow(table.size);
    return header + 1;
}

void FreeFixedTable(void* table) {
    if (!table) return;
    const Bytes bytes = (static_cast<FixedHeader*>(table) - 1)->bytes;
    {
        const Guard guard(mutex);
        --counts.liveBlocks;
        counts.liveBytes -= bytes.size;
    }
    FreeBytes(bytes);
}

size_t MemorySize(MemoryHandle memory) {
    const Guard guard(mutex);
    if (!memory || IsRefused(sizeRefusals, &counts.sizes)) return 0;
    return static_cast<Block*>(memory)->bytes.size;
}

// The C library's heap keeps freed blocks by itself.
void KeepFreedMemory() {}
void StopKeepingFreedMemory() {}

MemoryCounts CountMemory() {
    const Guard guard(mutex);
    return counts;
}

void ResetMemoryCounts() {
    const Guard guard(mutex);
    counts.allocations = 0;
    counts.largestBytes = 0;
    counts.locks = 0;
    counts.sizes = 0;
    counts.peakBytes = counts.liveBytes;
    allocationRefusals = {};
    lockRefusals = {};
    sizeRefusals = {};
}

void GuardMemory(GuardPages pages) {
    const Guard guard(mutex);
    guardPages = pages;
}

void RefuseAllocation(size_t number) {
    const Guard guard(mutex);
    counts.allocations = 0;
    allocationRefusals = {number, 0};
}

void RefuseAllocationsFrom(size_t number) {
    const Guard guard(mutex);
    counts.allocations = 0;
    allocationRefusals = {0, number};
}

void RefuseLock(size_t number) {
    const Guard guard(mutex);
    counts.locks = 0;
    lockRefusals = {number, 0};
}

void RefuseLocksFrom(size_t number) {
    const Guard guard(mutex);
    counts.locks = 0;
    lockRefusals = {0, number};
}

void RefuseSize(size_t number) {
    const Guard guard(mutex);
    counts.sizes = 0;
    sizeRefusals = {number, 0};
}

void RefuseSizesFrom(size_t number) {
    const Guard guard(mutex);
    counts.sizes = 0;
    sizeRefusals = {0, number};
}

UncountedMemory::UncountedMemory() {
    const Guard guard(mutex);
    ++uncounted;
}

UncountedMemory::~UncountedMemory() {
    const Guard guard(mutex);
    --uncounted;
}

}  // namespace kfx
