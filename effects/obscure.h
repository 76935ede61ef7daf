// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Mosaic: square tiles of `level` pixels a side, each filled with its average colour. Pictures of every
// depth, whose pixel values are averaged byte by byte. A new image, or null for a level below 1 or when
// memory ran out.
ImageHandle ApplyObscure(ImageHandle source, int32_t level);

extern const EffectRecord kObscureEffect;

}  // namespace kfx
