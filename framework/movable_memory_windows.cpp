// SPDX-License-Identifier: MIT
#include "framework/movable_memory.h"

#include <windows.h>

#include <atomic>
#include <cstring>

namespace kfx {
namespace {

// Smaller blocks come from pages that the heap holds anyway.
constexpr size_t kLeastKeptBytes = 128 * 1024;

constinit std::atomic<int> keepers = 0;         // how many KeepFreedMemory are open
constinit std::atomic<HGLOBAL> kept = nullptr;  // the block that was freed last; null: none

// Takes the kept block, zeroed, when it has exactly this size. Null: there is none.
MemoryHandle TakeKept(size_t bytes) {
    const HGLOBAL block = kept.exchange(nullptr);
    if (!block) return nullptr;
    if (GlobalSize(block) == bytes)
        if (void* address = GlobalLock(block)) {
            std::memset(address, 0, bytes);
            GlobalUnlock(block);
            return block;
        }
    GlobalFree(block);
    return nullptr;
}

bool IsKept(MemoryHandle memory) {
    if (keepers == 0 || GlobalSize(memory) < kLeastKeptBytes) return false;
    if (const HGLOBAL earlier = kept.exchange(memory)) GlobalFree(earlier);
    return true;
}

}  // namespace

MemoryHandle AllocateMemory(size_t bytes) {
    if (bytes >= kLeastKeptBytes)
        if (const MemoryHandle block = TakeKept(bytes)) return block;
    return GlobalAlloc(GHND, bytes ? bytes : 1);
}

void* LockMemory(MemoryHandle memory) { return memory ? GlobalLock(memory) : nullptr; }

void UnlockMemory(MemoryHandle memory) { GlobalUnlock(memory); }

MemoryHandle ResizeMemory(MemoryHandle memory, size_t bytes) {
    return GlobalReAlloc(memory, bytes ? bytes : 1, GMEM_MOVEABLE | GMEM_ZEROINIT);
}

void FreeMemory(MemoryHandle memory) {
    if (memory && !IsKept(memory)) GlobalFree(memory);
}

// The handle of a fixed block is its address.
void* AllocateFixedTable(size_t bytes) { return GlobalAlloc(GPTR, bytes ? bytes : 1); }

void FreeFixedTable(void* table) {
    if (table) GlobalFree(table);
}

size_t MemorySize(MemoryHandle memory) { return memory ? GlobalSize(memory) : 0; }

void KeepFreedMemory() { ++keepers; }

void StopKeepingFreedMemory() {
    if (--keepers > 0) return;
    if (const HGLOBAL block = kept.exchange(nullptr)) GlobalFree(block);
}

}  // namespace kfx
