// SPDX-License-Identifier: MIT
#pragma once

#include "kernels/region_distortion.h"

namespace kfx {

struct Pull {
    double radius;    // of the region, pixels
    double exponent;  // of what each distance is multiplied with; below 0 the picture is pulled inwards
};

// Without centre and key. The pull must live as long as the distortion.
RegionDistortion MakeImplosion(const Pull& pull);

// Pulls the picture towards a centre (`strength` above 0) or pushes it away from there (below 0). The centre
// is given in percent of width and height; the region reaches as far as the left edge, or the top edge of a
// tall picture. `background` (0x00BBGGRR) is what lies outside. A new image, or null when the picture is not
// 24 bits deep or memory ran out.
ImageHandle ImplodePicture(ImageHandle source, double strength, int32_t centerX, int32_t centerY,
                           uint32_t background, KernelCache* cache);

}  // namespace kfx
