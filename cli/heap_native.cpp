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
constexpr size_t kSmallPagesBytes = size_t{256} << 10;
constexpr size_t kNotesBytes = 64;  // at least what the heap writes before and behind a block
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
    // Small blocks go into what is before `filler`, on small pages. The filler's own pages are never touched,
    // so that it takes no memory; it ends where a large page begins. The heap has to grow for the two, and
    // what is behind them stays in the heap for later blocks.
    const std::unique_ptr<void, decltype(&std::free)> room(std::malloc(kSmallPagesBytes), std::free);
    if (!room) return;
    const auto behind = reinterpret_cast<uintptr_t>(room.get()) + kSmallPagesBytes + kNotesBytes;
    const uintptr_t boundary = (behind + kNotesBytes + kLargePage) / kLargePage * kLargePage;
    static void* volatile filler;  // never freed; static, so that it counts as no leak
    filler = std::malloc(boundary - behind - kNotesBytes);
    if (!filler) return;
    madvise(reinterpret_cast<void*>(boundary), kAdvisedBytes - 2 * kLargePage, MADV_HUGEPAGE);
}

}  // namespace kfx::cli
