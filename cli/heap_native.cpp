// SPDX-License-Identifier: MIT
#include "cli/heap.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>

namespace kfx::cli {
namespace {

constexpr size_t kLargePage = size_t{2} << 20;
constexpr size_t kAdvisedBytes = size_t{128} << 20;  // of address space; only what is used takes memory

// Batch systems limit the address space; then nothing may be asked for ahead.
bool IsLimited(int resource) {
    rlimit limit = {};
    return getrlimit(static_cast<__rlimit_resource_t>(resource), &limit) != 0 ||
           limit.rlim_cur != RLIM_INFINITY;
}

}  // namespace

void PrepareHeap() {
    if (IsLimited(RLIMIT_AS) || IsLimited(RLIMIT_DATA)) return;
    // The greatest threshold of its own. Without it, the first block of each size is given back when it is
    // freed.
    constexpr int kLargestOnHeap = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, kLargestOnHeap);
    mallopt(M_TOP_PAD, int{kAdvisedBytes});
    mallopt(M_TRIM_THRESHOLD, int{kAdvisedBytes} * 2);
    // A block on the heap makes it grow; what is behind the block stays in the heap for later ones.
    const std::unique_ptr<void, decltype(&std::free)> block(std::malloc(kLargePage), std::free);
    if (!block) return;
    const auto start = (reinterpret_cast<uintptr_t>(block.get()) + kLargePage - 1) / kLargePage * kLargePage;
    madvise(reinterpret_cast<void*>(start), kAdvisedBytes - kLargePage, MADV_HUGEPAGE);
}

}  // namespace kfx::cli
