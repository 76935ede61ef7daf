// SPDX-License-Identifier: MIT
// Counts the movable memory that the plug-in allocates, locks and frees, and refuses on request.
#pragma once

#include <windows.h>

#include <cstddef>
#include <memory>

namespace kfx::test {

// While it lives, every movable block of the module passes through the ledger.
struct MemoryLedger {
    explicit MemoryLedger(HMODULE module);
    ~MemoryLedger();
    MemoryLedger(const MemoryLedger&) = delete;
    MemoryLedger& operator=(const MemoryLedger&) = delete;

    struct Patches;
    std::unique_ptr<Patches> patches;
};

struct LedgerCounts {
    size_t liveBlocks;  // allocated by the module or handed over to it, and not freed
    size_t lockedBlocks;
    size_t strangeFrees;  // frees of what was never the module's
    size_t allocations;   // attempts since the last RefuseGlobalAllocations
    size_t locks;         // attempts since the last RefuseGlobalLocks
};

LedgerCounts CountLedger();

// The block now belongs to the module: it has to free it.
void HandOver(HGLOBAL memory);

constexpr size_t kAllAfter = static_cast<size_t>(-1);

// The module's allocations (and resizes) with these numbers, from 1 after now, are refused; 0 refuses none.
void RefuseGlobalAllocations(size_t first, size_t last);

// The same for its locks.
void RefuseGlobalLocks(size_t first, size_t last);

}  // namespace kfx::test
