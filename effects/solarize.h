// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Inverts every colour channel below the threshold (any number) and keeps the others. A new image, or null
// when the picture is not 24 bits deep or memory ran out.
ImageHandle ApplySolarize(ImageHandle source, int32_t threshold);

extern const EffectRecord kSolarizeEffect;

}  // namespace kfx
