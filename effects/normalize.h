// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Stretches the contrast between the luminance levels beyond which one percent of the pixels lie. A new
// image, or null when all pixels have one luminance, the picture is not 24 bits deep or memory ran out.
ImageHandle ApplyNormalize(ImageHandle source);

// The same for all frames of an animation alike: `record`, zero at first, gathers their luminance; then every
// frame is stretched by it. Without memory for the record every frame stays as it is.
void GatherLuminance(ImageHandle source, uint64_t record[2]);
ImageHandle ApplyGatheredLuminance(ImageHandle source, const uint64_t record[2]);
void ReleaseLuminance(uint64_t record[2]);

extern const EffectRecord kNormalizeEffect;

}  // namespace kfx
