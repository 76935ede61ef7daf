// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Averages over a square of depth / 6 pixels to each side, edge pixels repeated outside the picture. A new
// image, or null: depth below 6, fewer than 24 bits, or memory ran out.
ImageHandle BoxBlur(ImageHandle source, int32_t depth);

}  // namespace kfx
