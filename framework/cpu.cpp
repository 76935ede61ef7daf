// SPDX-License-Identifier: MIT
#include "framework/cpu.h"

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

bool avx2Allowed = true;  // written by AllowAvx2 only

}  // namespace

bool UseAvx2() {
    static const bool supported = Supported();
    return supported && avx2Allowed;
}

void AllowAvx2(bool allowed) { avx2Allowed = allowed; }

}  // namespace kfx
