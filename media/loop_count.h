// SPDX-License-Identifier: MIT
// WebP and PNG files store how often an animation is shown, 0 for ever; Animation has how often it is
// repeated after it was shown once.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

#include "media/animation.h"

namespace kfx {

inline int RepeatsOf(uint32_t timesShown) {
    if (timesShown == 0) return kLoopForever;
    return timesShown == 1 ? kLoopNone : static_cast<int>(std::min<uint32_t>(timesShown - 1, INT_MAX));
}

// At most `most`, which the format can store.
inline uint32_t TimesShown(int loopCount, uint32_t most) {
    if (loopCount == kLoopForever) return 0;
    return loopCount < 0 ? 1 : std::min(static_cast<uint32_t>(loopCount) + 1, most);
}

}  // namespace kfx
