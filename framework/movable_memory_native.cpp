// SPDX-License-Identifier: MIT
#include "framework/movable_memory_native.h"

#include <cstdlib>
#include <cstring>

#include "framework/movable_memory.h"

namespace kfx {
namespace {

// A handle points at this record and never at the bytes, so code that forgets to lock is caught at once.
struct Block {
    void* bytes;
    size_t size;
    size_t locks;
};

// Which attempts of one kind are refused, counted from 1; 0: none.
struct Refusals {
    size_t number;
    size_t from;
};

MemoryCounts counts;          // written by every function below
Refusals allocationRefusals;  // written by the functions that tests call
Refusals lockRefusals;
size_t uncounted;  // how many UncountedMemory live

bool IsRefused(const Refusals& refusals, size_t* attempts) {
    if (uncounted) return false;
    const size_t number = ++*attempts;
    return number == refusals.number || (refusals.from && number >= refusals.from);
}

bool IsAllocationRefused(size_t bytes) {
    if (!uncounted && bytes > counts.largestBytes) counts.largestBytes = bytes;
    return IsRefused(allocationRefusals, &counts.allocations);
}

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
    block->bytes = std::calloc(block->size, 1);
    if (!block->bytes) {
        std::free(block);
        return nullptr;
    }
    ++counts.liveBlocks;
    Grow(block->size);
    return block;
}

void* LockMemory(MemoryHandle memory) {
    if (!memory || IsRefused(lockRefusals, &counts.locks)) return nullptr;
    auto* block = static_cast<Block*>(memory);
    if (block->locks++ == 0) ++counts.lockedBlocks;
    return block->bytes;
}

void UnlockMemory(MemoryHandle memory) {
    auto* block = static_cast<Block*>(memory);
    if (!block) return;
    if (!block->locks)
        ++counts.strayUnlocks;
    else if (--block->locks == 0)
        --counts.lockedBlocks;
}

MemoryHandle ResizeMemory(MemoryHandle memory, size_t bytes) {
    if (!memory || IsAllocationRefused(bytes)) return nullptr;
    auto* block = static_cast<Block*>(memory);
    const size_t size = bytes ? bytes : 1;
    void* moved = std::realloc(block->bytes, size);
    if (!moved) return nullptr;
    if (size > block->size) std::memset(static_cast<char*>(moved) + block->size, 0, size - block->size);
    counts.liveBytes -= block->size;
    Grow(size);
    block->bytes = moved;
    block->size = size;
    return block;
}

void FreeMemory(MemoryHandle memory) {
    if (!memory) return;
    auto* block = static_cast<Block*>(memory);
    --counts.liveBlocks;
    counts.liveBytes -= block->size;
    if (block->locks) {
        ++counts.lockedFrees;
        --counts.lockedBlocks;
    }
    std::free(block->bytes);
    std::free(block);
}

size_t MemorySize(MemoryHandle memory) { return memory ? static_cast<Block*>(memory)->size : 0; }

MemoryCounts CountMemory() { return counts; }

void ResetMemoryCounts() {
    counts.allocations = 0;
    counts.largestBytes = 0;
    counts.locks = 0;
    counts.peakBytes = counts.liveBytes;
    allocationRefusals = {};
    lockRefusals = {};
}

void RefuseAllocation(size_t number) {
    counts.allocations = 0;
    allocationRefusals = {number, 0};
}

void RefuseAllocationsFrom(size_t number) {
    counts.allocations = 0;
    allocationRefusals = {0, number};
}

void RefuseLock(size_t number) {
    counts.locks = 0;
    lockRefusals = {number, 0};
}

void RefuseLocksFrom(size_t number) {
    counts.locks = 0;
    lockRefusals = {0, number};
}

UncountedMemory::UncountedMemory() { ++uncounted; }
UncountedMemory::~UncountedMemory() { --uncounted; }

}  // namespace kfx
