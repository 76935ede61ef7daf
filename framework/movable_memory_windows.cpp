// SPDX-License-Identifier: MIT
#include "framework/movable_memory.h"

#include <windows.h>

namespace kfx {

MemoryHandle AllocateMemory(size_t bytes) { return GlobalAlloc(GHND, bytes ? bytes : 1); }

void* LockMemory(MemoryHandle memory) { return memory ? GlobalLock(memory) : nullptr; }

void UnlockMemory(MemoryHandle memory) { GlobalUnlock(memory); }

MemoryHandle ResizeMemory(MemoryHandle memory, size_t bytes) {
    return GlobalReAlloc(memory, bytes ? bytes : 1, GMEM_MOVEABLE | GMEM_ZEROINIT);
}

void FreeMemory(MemoryHandle memory) {
    if (memory) GlobalFree(memory);
}

// The handle of a fixed block is its address.
void* AllocateFixedTable(size_t bytes) { return GlobalAlloc(GPTR, bytes ? bytes : 1); }

void FreeFixedTable(void* table) {
    if (table) GlobalFree(table);
}

size_t MemorySize(MemoryHandle memory) { return memory ? GlobalSize(memory) : 0; }

}  // namespace kfx
