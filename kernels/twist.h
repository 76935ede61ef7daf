// SPDX-License-Identifier: MIT
// The picture is turned about a centre, most in the middle and not at all at the rim of the region.
#pragma once

#include "kernels/region_distortion.h"

namespace kfx {

struct Turn {
    double radius;  // of the region, pixels
    double angle;   // radians, at the centre
};

// Without centre and key. The turn must live as long as the distortion.
RegionDistortion MakeTwist(const Turn& turn);

}  // namespace kfx
