// SPDX-License-Identifier: MIT
// Scope guards over movable memory.
#pragma once

#include <cstddef>

#include "framework/movable_memory.h"

namespace kfx {

// Holds a block locked for its scope. Test it before use: false when the lock failed.
struct MemoryLock {
    explicit MemoryLock(MemoryHandle block) : memory(block), address(LockMemory(block)) {}
    ~MemoryLock() {
        if (address) UnlockMemory(memory);
    }
    MemoryLock(const MemoryLock&) = delete;
    MemoryLock& operator=(const MemoryLock&) = delete;
    explicit operator bool() const { return address != nullptr; }

    const MemoryHandle memory;
    void* const address;
};

// Owns a block for its scope, unless it is released to the caller.
struct MemoryOwner {
    explicit MemoryOwner(MemoryHandle block = nullptr) : memory(block) {}
    ~MemoryOwner() { FreeMemory(memory); }
    MemoryOwner(const MemoryOwner&) = delete;
    MemoryOwner& operator=(const MemoryOwner&) = delete;

    MemoryHandle Release() {
        MemoryHandle released = memory;
        memory = nullptr;
        return released;
    }

    MemoryHandle memory;
};

// Freed memory may be kept for the next block of its size within this scope.
struct FreedMemoryKept {
    FreedMemoryKept() { KeepFreedMemory(); }
    ~FreedMemoryKept() { StopKeepingFreedMemory(); }
    FreedMemoryKept(const FreedMemoryKept&) = delete;
    FreedMemoryKept& operator=(const FreedMemoryKept&) = delete;
};

// A zeroed working table of `count` elements of a plain type, freed at the end of the scope. Test it before
// use: false when memory ran out or the size would overflow.
template <typename T>
struct Scratch {
    explicit Scratch(size_t count)
        : memory(count <= static_cast<size_t>(-1) / 2 / sizeof(T) ? AllocateMemory(count * sizeof(T))
                                                                  : nullptr),
          address(static_cast<T*>(LockMemory(memory))) {}
    ~Scratch() {
        if (address) UnlockMemory(memory);
        FreeMemory(memory);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    explicit operator bool() const { return address != nullptr; }
    T& operator[](size_t index) const { return address[index]; }

    const MemoryHandle memory;
    T* const address;
};

}  // namespace kfx
