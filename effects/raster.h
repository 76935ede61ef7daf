// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Scan lines of `size` rows, with gaps of as many rows between them, starting with a line at the top;
// `density` is their opacity in 255ths, `background` (0x00BBGGRR) their colour. Sizes below 1 draw no line. A
// new image, or null when the picture is not 24 bits deep or memory ran out.
ImageHandle ApplyRaster(ImageHandle source, int32_t density, int32_t size, uint32_t background);

extern const EffectRecord kRasterEffect;

}  // namespace kfx
