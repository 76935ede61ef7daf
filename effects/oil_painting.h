// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Every pixel of a 24-bit picture takes the colour of the most frequent brightness in the diamond around it;
// `radius` in hundredths of a pixel. Outside the picture lies `background` (0x00BBGGRR). A new image, or null
// when memory ran out.
ImageHandle ApplyOilPainting(ImageHandle source, int32_t radius, uint32_t background);

extern const EffectRecord kOilPaintingEffect;

}  // namespace kfx
