// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Relief by a square matrix made from a Gaussian bell. `radius` in tenths of a pixel of spread; `depth` is
// the matrix size, rounded up to the next odd number. A new image, or null for a picture smaller than the
// matrix or when memory ran out.
ImageHandle ApplyEmboss(ImageHandle source, int32_t radius, int32_t depth);

extern const EffectRecord kEmbossEffect;

}  // namespace kfx
