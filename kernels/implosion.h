// SPDX-License-Identifier: MIT
#pragma once

#include "framework/kernel_cache.h"
#include "framework/working_image.h"

namespace kfx {

// Pulls the picture towards a centre (`strength` above 0) or pushes it away from there (below 0). The centre
// is given in percent of width and height; the region reaches as far as the left edge, or the top edge of a
// tall picture. `background` (0x00BBGGRR) is what lies outside; `cache` may be null. A new image, or null
// when the picture is not 24 bits deep or memory ran out.
ImageHandle ImplodePicture(ImageHandle source, double strength, int32_t centerX, int32_t centerY,
                           uint32_t background, KernelCache* cache);

}  // namespace kfx
