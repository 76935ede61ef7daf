// SPDX-License-Identifier: MIT
// The calling thread's floating-point controls as a host may have set them, without the status flags.
#pragma once

#include <cstdint>

namespace kfx::test {

struct FloatingPointControls {
    uint16_t x87 = 0;
    uint32_t mxcsr = 0;
};

inline FloatingPointControls ReadControls() {
    FloatingPointControls controls;
    __asm__ volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(controls.x87), "=m"(controls.mxcsr));
    controls.mxcsr &= ~0x3Fu;
    return controls;
}

inline void SetControls(const FloatingPointControls& controls) {
    __asm__ volatile("fnclex\n\tfldcw %0\n\tldmxcsr %1" : : "m"(controls.x87), "m"(controls.mxcsr));
}

inline bool operator==(const FloatingPointControls& a, const FloatingPointControls& b) {
    return a.x87 == b.x87 && a.mxcsr == b.mxcsr;
}

}  // namespace kfx::test
