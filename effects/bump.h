// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Raised relief of a 24-bit picture by a fixed 3 x 3 kernel. A new image, or null when memory ran out.
ImageHandle ApplyBump(ImageHandle source);

extern const EffectRecord kBumpEffect;

}  // namespace kfx
