// SPDX-License-Identifier: MIT
// What the native allocator offers to tests besides movable_memory.h: counts, and refusals on request.
#pragma once

#include <cstddef>

namespace kfx {

struct MemoryCounts {
    size_t liveBlocks;
    size_t liveBytes;
    size_t lockedBlocks;  // blocks that somebody forgot to unlock, when looked at between calls
    size_t allocations;   // attempts since the last reset, refused ones included
    size_t largestBytes;  // of those attempts, the greatest size
    size_t locks;         // attempts to lock a block since the last reset, refused ones included
    size_t sizes;         // questions for a block's size since the last reset, refused ones included
    size_t strayUnlocks;  // unlocks of blocks that were not locked, ever
    size_t lockedFrees;   // frees of blocks that were locked, ever
    size_t peakBytes;
    size_t guardedBlocks;  // that have been allocated with guard pages, ever
    size_t spoiledSlack;   // bytes written outside guarded blocks, but short of the guard page, ever
};

MemoryCounts CountMemory();

// Counts from 0 again and refuses nothing.
void ResetMemoryCounts();

// The allocation (or resize) with this number, counted from 1 after now, is refused, once; 0 refuses none.
void RefuseAllocation(size_t number);

// From that allocation on, every one is refused; 0 refuses none.
void RefuseAllocationsFrom(size_t number);

// The same for attempts to lock a block. A refused lock leaves the block as it was.
void RefuseLock(size_t number);
void RefuseLocksFrom(size_t number);

// The same for questions for a block's size: a refused one is answered with 0.
void RefuseSize(size_t number);
void RefuseSizesFrom(size_t number);

// Where blocks that are allocated from now on have a page that ends the program when it is touched.
enum class GuardPages {
    None,
    Behind,  // at the block's last byte; bytes before the block are checked when it is freed
    Before,  // at its first byte; bytes behind it are checked when it is freed
};
void GuardMemory(GuardPages pages);

// While it lives, nothing is refused and nothing of it is counted: for what a test does with memory
// in the middle of an operation, in the host's place.
struct UncountedMemory {
    UncountedMemory();
    ~UncountedMemory();
    UncountedMemory(const UncountedMemory&) = delete;
    UncountedMemory& operator=(const UncountedMemory&) = delete;
};

}  // namespace kfx
