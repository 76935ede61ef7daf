// SPDX-License-Identifier: MIT
#include "framework/movable_memory.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstring>

namespace kfx {
namespace {

// Smaller blocks come from pages that the heap holds anyway.
constexpr size_t kLeastKeptBytes = 128 * 1024;

constinit std::atomic<int> keepers = 0;         // how many KeepFreedMemory are open
constinit std::atomic<HGLOBAL> kept = nullptr;  // the block that was freed last; null: none

// A block of gigabytes is given back in one step, in which every other thread of the host waits that asks the
// system for memory: 0.3 s for 2.8 GB, measured under Wine. So the pages of a very large block are given back
// before, in steps, where the system does that for MEM_RESET; elsewhere this changes nothing.
constexpr size_t kLeastSteppedBytes = size_t{64} << 20;
constexpr size_t kStepBytes = size_t{16} << 20;
constexpr size_t kPageBytes = 4096;

// What the block holds is lost. A step that is refused is left to the system.
void EmptyInSteps(HGLOBAL block) {
    const size_t size = GlobalSize(block);
    if (size < kLeastSteppedBytes) return;
    auto* const address = static_cast<uint8_t*>(GlobalLock(block));
    if (!address) return;
    // Only whole pages: others may share the first and the last one.
    size_t at = (kPageBytes - reinterpret_cast<uintptr_t>(address) % kPageBytes) % kPageBytes;
    while (size - at >= kPageBytes) {
        const size_t rest = (size - at) / kPageBytes * kPageBytes;
        const size_t step = rest < kStepBytes ? rest : kStepBytes;
        VirtualAlloc(address + at, step, MEM_RESET, PAGE_READWRITE);
        at += step;
    }
    GlobalUnlock(block);
}

void GiveBack(HGLOBAL block) {
    EmptyInSteps(block);
    GlobalFree(block);
}

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
    GiveBack(block);
    return nullptr;
}

bool IsKept(MemoryHandle memory) {
    if (keepers == 0 || GlobalSize(memory) < kLeastKeptBytes) return false;
    if (const HGLOBAL earlier = kept.exchange(memory)) GiveBack(earlier);
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
    if (memory && !IsKept(memory)) GiveBack(memory);
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
    if (const HGLOBAL block = kept.exchange(nullptr)) GiveBack(block);
}

}  // namespace kfx
