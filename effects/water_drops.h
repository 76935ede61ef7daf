// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Takes every pixel from a random place near it: up to `aperture` / 2 pixels left and above, one less to the
// right and below for even apertures. The pattern follows from the clock's second alone. Any depth. A new
// image, or null when `aperture` is below 1 or memory ran out.
ImageHandle ApplyWaterDrops(ImageHandle source, int32_t aperture);

extern const EffectRecord kWaterDropsEffect;

}  // namespace kfx
