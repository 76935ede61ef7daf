// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Every pixel of a 24-bit picture becomes the strength of the colour edges around it, channel by channel. A
// new image, or null when memory ran out.
ImageHandle ApplyNeon(ImageHandle source);

extern const EffectRecord kNeonEffect;

}  // namespace kfx
