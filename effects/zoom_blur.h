// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Averages every pixel with up to `cycles` samples, each `displacement` hundredths of a percent nearer to the
// centre than the one before. Pictures of every depth, whose pixel values are averaged byte by byte. `cache`
// may be null. A new image, or null when memory ran out.
ImageHandle ApplyZoomBlur(ImageHandle source, int32_t displacement, int32_t cycles,
                          KernelCache* cache = nullptr);

extern const EffectRecord kZoomBlurEffect;

}  // namespace kfx
