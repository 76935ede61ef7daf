// SPDX-License-Identifier: MIT
// Movable memory: all of the plug-in's allocations go through these functions. In the product it is the
// system's movable global memory, whose handles pass between plug-in and host; natively it is a counting
// allocator that tests can make fail.
#pragma once

#include <cstddef>

namespace kfx {

using MemoryHandle = void*;

// A zeroed block of `bytes` bytes (at least one). Null: out of memory.
MemoryHandle AllocateMemory(size_t bytes);

// The block's address, valid until the matching UnlockMemory. Null: not a block. Locks nest.
void* LockMemory(MemoryHandle memory);
void UnlockMemory(MemoryHandle memory);

// The block with a new size, new bytes zeroed; the old handle is invalid then. Null: out of memory, the old
// block stays.
MemoryHandle ResizeMemory(MemoryHandle memory, size_t bytes);

// Frees the block; null is allowed.
void FreeMemory(MemoryHandle memory);

// A zeroed table of `bytes` bytes (at least one) that stays at its address and needs no lock: for what has to
// be reached when a lock is refused. Null: out of memory. FreeFixedTable takes null as well.
void* AllocateFixedTable(size_t bytes);
void FreeFixedTable(void* table);

// The block's real size in bytes; 0 when it is not a block.
size_t MemorySize(MemoryHandle memory);

// Between these two calls a large block that is freed may be kept, and handed out, zeroed, to the next who
// asks for as many bytes: clearing memory takes less time than getting it from the system page by page. A
// build makes and frees a picture of one size for each frame. Calls nest; any thread may allocate and free
// meanwhile. The last StopKeepingFreedMemory frees what is kept.
void KeepFreedMemory();
void StopKeepingFreedMemory();

}  // namespace kfx
