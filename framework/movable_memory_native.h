// SPDX-License-Identifier: MIT
// What tests ask of the native allocator beyond the seam: counts, and refusals on request.
#pragma once

#include <cstddef>

namespace kfx {

struct MemoryCounts {
    size_t liveBlocks;
    size_t liveBytes;
    size_t lockedBlocks;  // blocks that somebody forgot to unlock, when looked at between calls
    size_t allocations;   // attempts since the last reset, refused ones included
    size_t peakBytes;
};

MemoryCounts CountMemory();
void ResetMemoryCounts();

// The allocation (or resize) with this number, counted from 1 after now, is refused, once; 0 refuses none.
void RefuseAllocation(size_t number);

// From that allocation on, every one is refused; 0 refuses none.
void RefuseAllocationsFrom(size_t number);

}  // namespace kfx
