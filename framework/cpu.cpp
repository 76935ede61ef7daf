// SPDX-License-Identifier: MIT
#include "framework/cpu.h"

#include <atomic>

namespace kfx {
namespace {

bool Supported() {
#if KFX_HAS_AVX2
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

enum class Support { Unknown, No, Yes };

// The first thread that asks finds out. Two threads that ask at once get the same result.
constinit std::atomic<Support> support = Support::Unknown;
constinit std::atomic<bool> avx2Allowed = true;  // written by AllowAvx2 only

}  // namespace

bool UseAvx2() {
    Support known = support.load(std::memory_order_relaxed);
    if (known == Support::Unknown) {
        known = Supported() ? Support::Yes : Support::No;
        support.store(known, std::memory_order_relaxed);
    }
    return known == Support::Yes && avx2Allowed.load(std::memory_order_relaxed);
}

void AllowAvx2(bool allowed) { avx2Allowed.store(allowed, std::memory_order_relaxed); }

}  // namespace kfx
