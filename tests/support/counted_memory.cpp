// SPDX-License-Identifier: MIT
#include "tests/support/counted_memory.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> allocated = 0;
std::atomic<size_t> peak = 0;

// In front of each block: its size.
constexpr size_t kHead = alignof(std::max_align_t);

void* Allocate(size_t size) {
    auto* const head = static_cast<uint8_t*>(std::malloc(kHead + size));
    if (!head) return nullptr;
    *reinterpret_cast<size_t*>(head) = size;
    allocated += size;
    peak = std::max<size_t>(peak, allocated);
    return head + kHead;
}

void* AllocateOrThrow(size_t size) {
    void* const block = Allocate(size);
    if (!block) throw std::bad_alloc();
    return block;
}

void Free(void* block) {
    if (!block) return;
    uint8_t* const head = static_cast<uint8_t*>(block) - kHead;
    allocated -= *reinterpret_cast<size_t*>(head);
    std::free(head);
}

}  // namespace

void* operator new(size_t size) { return AllocateOrThrow(size); }
void* operator new[](size_t size) { return AllocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, size_t) noexcept { Free(block); }
void operator delete[](void* block, size_t) noexcept { Free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Free(block); }

namespace kfx::test {

size_t PeakOf(const std::function<void()>& work) {
    const size_t before = allocated;
    peak = before;
    work();
    return peak - before;
}

}  // namespace kfx::test
