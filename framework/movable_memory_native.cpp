// SPDX-License-Identifier: MIT
#include "framework/movable_memory_native.h"

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "framework/movable_memory.h"

namespace kfx {
namespace {

// A handle points at this record and never at the bytes, so code that forgets to lock is caught at once.
struct Block {
    void* bytes;
    size_t size;
    size_t locks;
};

// Stands before a fixed table, whose address is the caller's.
struct alignas(std::max_align_t) FixedHeader {
    size_t size;
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

size_t MappedBytes(size_t size) { return (size + kPage - 1) / kPage * kPage; }
size_t SlackBytes(size_t size) { return MappedBytes(size) - (size + 15) / 16 * 16; }

void* AllocateBytes(size_t size) {
    if (size < kMappedFrom) return std::calloc(size, 1);
    if (size > SIZE_MAX / 2) return nullptr;
    void* pages = mmap(nullptr, MappedBytes(size) + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) return nullptr;
    if (mprotect(pages, MappedBytes(size), PROT_READ | PROT_WRITE) == 0)
        return static_cast<char*>(pages) + SlackBytes(size);
    munmap(pages, MappedBytes(size) + kPage);
    return nullptr;
}

void FreeBytes(void* bytes, size_t size) {
    if (size < kMappedFrom)
        std::free(bytes);
    else
        munmap(static_cast<char*>(bytes) - SlackBytes(size), MappedBytes(size) + kPage);
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
    block->size = bytes ? bytes : 1;
    block->locks = 0;
    block->bytes = AllocateBytes(block->size);
    if (!block->bytes) {
        std::free(block);
        return nullptr;
    }
    const Guard guard(mutex);
    ++counts.liveBlocks;
    Grow(block->size);
    return block;
}

void* LockMemory(MemoryHandle memory) {
    const Guard guard(mutex);
    if (!memory || IsRefused(lockRefusals, &counts.locks)) return nullptr;
    auto* block = static_cast<Block*>(memory);
    if (block->locks++ == 0) ++counts.lockedBlocks;
    return block->bytes;
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
    const size_t size = bytes ? bytes : 1;
    void* moved = AllocateBytes(size);
    if (!moved) return nullptr;
    std::memcpy(moved, block->bytes, size < block->size ? size : block->size);
    FreeBytes(block->bytes, block->size);
    const Guard guard(mutex);
    counts.liveBytes -= block->size;
    Grow(size);
    block->bytes = moved;
    block->size = size;
    return block;
}

void FreeMemory(MemoryHandle memory) {
    if (!memory) return;
    auto* block = static_cast<Block*>(memory);
    {
        const Guard guard(mutex);
        --counts.liveBlocks;
        counts.liveBytes -= block->size;
        if (block->locks) {
            ++counts.lockedFrees;
            --counts.lockedBlocks;
        }
    }
    FreeBytes(block->bytes, block->size);
    std::free(block);
}

void* AllocateFixedTable(size_t bytes) {
    if (IsAllocationRefused(bytes)) return nullptr;
    auto* header = static_cast<FixedHeader*>(std::calloc(1, sizeof(FixedHeader) + bytes));
    if (!header) return nullptr;
    header->size = bytes;
    const Guard guard(mutex);
    ++counts.liveBlocks;
    Grow(bytes);
    return header + 1;
}

void FreeFixedTable(void* table) {
    if (!table) return;
    auto* header = static_cast<FixedHeader*>(table) - 1;
    {
        const Guard guard(mutex);
        --counts.liveBlocks;
        counts.liveBytes -= header->size;
    }
    std::free(header);
}

size_t MemorySize(MemoryHandle memory) {
    const Guard guard(mutex);
    if (!memory || IsRefused(sizeRefusals, &counts.sizes)) return 0;
    return static_cast<Block*>(memory)->size;
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
