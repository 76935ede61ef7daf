// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Twists the picture round its centre, by `position` - 1440 degrees there and less and less towards the
// ellipse that touches its edges. `background` (0x00BBGGRR) is what lies outside; `cache` may be null. A new
// image, or null when the picture is not 24 bits deep or memory ran out.
ImageHandle ApplySwirl(ImageHandle source, int32_t position, uint32_t background, KernelCache* cache);

extern const EffectRecord kSwirlEffect;

}  // namespace kfx
