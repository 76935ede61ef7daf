// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Rotational blur about the picture's centre over an arc of `angle` degrees (more than a full turn counts as
// one); samples outside the picture count as `background` (0x00BBGGRR). Pictures of every depth, whose pixel
// values are averaged byte by byte. A new image, or null when memory ran out or the arc is too short a
// negative one to hold two samples.
ImageHandle ApplyRadialBlur(ImageHandle source, int32_t angle, uint32_t background);

extern const EffectRecord kRadialBlurEffect;

}  // namespace kfx
