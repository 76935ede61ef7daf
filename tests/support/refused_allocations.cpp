// SPDX-License-Identifier: MIT
#include "tests/support/refused_allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool isRefusing = false;
thread_local kfx::test::Refusal refusal;
thread_local size_t counted = 0;

bool IsRefused(size_t size) {
    if (!isRefusing || size < refusal.smallest) return false;
    ++counted;
    return refusal.first != 0 && (refusal.fromThenOn ? counted >= refusal.first : counted == refusal.first);
}

}  // namespace

// The linker's --wrap turns every use of malloc into one of __wrap_malloc, and __real_malloc into malloc.
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);

void* __wrap_malloc(size_t size) { return IsRefused(size) ? nullptr : __real_malloc(size); }

void* __wrap_calloc(size_t count, size_t size) {
    return IsRefused(count * size) ? nullptr : __real_calloc(count, size);
}

void* __wrap_realloc(void* block, size_t size) {
    return IsRefused(size) ? nullptr : __real_realloc(block, size);
}
}

namespace {

void* AllocateOrThrow(size_t size) {
    void* const block = __wrap_malloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(size_t size) { return AllocateOrThrow(size); }
void* operator new[](size_t size) { return AllocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return __wrap_malloc(size > 0 ? size : 1); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return __wrap_malloc(size > 0 ? size : 1);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }

namespace kfx::test {

size_t WithRefusal(const Refusal& wanted, const std::function<void()>& work) {
    refusal = wanted;
    counted = 0;
    isRefusing = true;
    work();
    isRefusing = false;
    return counted;
}

}  // namespace kfx::test
