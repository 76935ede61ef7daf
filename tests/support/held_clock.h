// SPDX-License-Identifier: MIT
#pragma once

#include "framework/random.h"

namespace kfx::test {

// The clock stands still for a scope.
struct HeldClock {
    explicit HeldClock(uint32_t seconds) { HoldClock(seconds); }
    ~HeldClock() { ReleaseClock(); }
    HeldClock(const HeldClock&) = delete;
    HeldClock& operator=(const HeldClock&) = delete;
};

}  // namespace kfx::test
