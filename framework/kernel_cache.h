// SPDX-License-Identifier: MIT
// What a kernel keeps from one frame to the next: tables that depend on picture size and settings only. A
// cache lives as long as one preview or one build. It belongs to one thread: threads that work on frames at
// the same time have a cache each.
#pragma once

#include <cstddef>

#include "framework/movable_memory.h"

namespace kfx {

constexpr size_t kMostCacheKeyBytes = 64;
// Bytes. What may be computed again is not kept beyond.
constexpr size_t kLargestKeptTable = size_t{64} << 20;

struct KeptTable {
    KeptTable() = default;
    ~KeptTable();
    KeptTable(const KeptTable&) = delete;
    KeptTable& operator=(const KeptTable&) = delete;

    MemoryHandle memory = nullptr;
    void* address = nullptr;
    size_t bytes = 0;
    unsigned char key[kMostCacheKeyBytes] = {};
    size_t keyBytes = 0;
    bool filled = false;  // by the caller, to the end: only then is the table found again
};

struct KernelCache {
    KeptTable values;       // exact ones; not of effects that have polynomials
    KeptTable polynomials;  // see kernels/radial_estimate.h
    KeptTable points;       // from the second frame on, see kernels/kept_points.h
};

// Whether the effect that was run with this cache keeps anything; for tests and measurements.
inline bool KeepsTables(const KernelCache& cache) {
    return cache.values.address || cache.polynomials.address;
}

// The table of `bytes` bytes for this key (size and settings as plain bytes, at most kMostCacheKeyBytes).
// When no filled table is kept under that key the table is made anew, zeroed, and `*fresh` set: the caller
// fills it and says so with KeepTable. Null: memory ran out; nothing is kept then.
void* CachedTable(KeptTable* table, const void* key, size_t keyBytes, size_t bytes, bool* fresh);

// The fresh table is filled and will be found under its key. A table for which KeepTable is not called,
// because its frame was abandoned, is made anew the next time.
void KeepTable(KeptTable* table);

}  // namespace kfx
