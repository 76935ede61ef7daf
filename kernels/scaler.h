// SPDX-License-Identifier: MIT
// The image scaler, for the preview and for resizing: two separable filter passes. Effects never scale.
#pragma once

#include <cstdint>

#include "framework/working_image.h"

namespace kfx {

// A new image of trunc(side x percentage / 100 + 0.5) pixels on each side, at least 1, with the source's
// depth and colour table. The source stays the caller's. Null: a percentage below 0, no image, or memory ran
// out.
ImageHandle ScaleByPercentage(ImageHandle source, int32_t horizontalPercentage, int32_t verticalPercentage);

// A new image of `width` x `height` pixels. A `blur` above 1.0 widens the filter, below 1.0 narrows it;
// at 1.0 and the source's own size the result is an exact copy. Null: a side below 1, no image, or memory ran
// out.
ImageHandle Resample(ImageHandle source, int32_t width, int32_t height, double blur);

}  // namespace kfx
