// SPDX-License-Identifier: MIT
#include "tests/stage/refused_new.h"

#include <cstdlib>
#include <new>

namespace kfx::test {

std::atomic<long> newRefusals = 0;

namespace {

thread_local bool isCaller = false;
std::atomic<long> untilRefusal = 0;

bool IsRefused() {
    if (isCaller || untilRefusal == 0 || untilRefusal.fetch_sub(1) != 1) return false;
    ++newRefusals;
    return true;
}

}  // namespace

void RefuseNewOfOtherThreads(long number) {
    isCaller = true;
    newRefusals = 0;
    untilRefusal = number;
}

}  // namespace kfx::test

void* operator new(size_t bytes) {
    void* const memory = kfx::test::IsRefused() ? nullptr : std::malloc(bytes ? bytes : 1);
    if (!memory) throw std::bad_alloc();
    return memory;
}
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
    return kfx::test::IsRefused() ? nullptr : std::malloc(bytes ? bytes : 1);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
