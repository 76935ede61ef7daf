// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Pulls the picture towards a centre: pixels come from farther out. `radius` is the strength of the pull in
// hundredths, not a length; the centre is given in percent of width and height. `background` (0x00BBGGRR) is
// what lies outside the picture; `cache` may be null. A new image, or null when the picture is not 24 bits
// deep or memory ran out.
ImageHandle ApplyImplode(ImageHandle source, int32_t radius, int32_t centerX, int32_t centerY,
                         uint32_t background, KernelCache* cache);

extern const EffectRecord kImplodeEffect;

}  // namespace kfx
