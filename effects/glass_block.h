// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// The picture through a wall of glass bricks; `size` is half a brick's side in pixels. Pictures of every
// depth. A new image, or null for a size below 1 or when memory ran out.
ImageHandle ApplyGlassBlock(ImageHandle source, int32_t size);

extern const EffectRecord kGlassBlockEffect;

}  // namespace kfx
