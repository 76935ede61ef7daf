// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

struct RippleSettings {
    int32_t centerX;  // percent of the width; 100 is the middle, 0 and 200 lie half a picture outside
    int32_t centerY;
    int32_t amplitude;   // hundredths of a pixel
    int32_t wavelength;  // likewise
    int32_t phase;       // hundredths of a radian
    int32_t energy;      // percent that is left of the waves when they dissipate
    int32_t dissipate;   // 0: the waves keep their height
};

// Lays sine waves round a centre over the picture. Any depth; with 8 bits and fewer, colour-table indices are
// blended like colours. `cache` may be null. A new image, or null when the wavelength is 0 or memory ran out.
ImageHandle ApplyRipple(ImageHandle source, const RippleSettings& ripple, KernelCache* cache);

extern const EffectRecord kRippleEffect;

}  // namespace kfx
