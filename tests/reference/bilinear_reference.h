// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"

namespace kfx::test {

// The bilinear sample that Swirl, Implode and Explode take.
uint32_t ReferenceBilinear(const WorkingImage* image, double x, double y, uint32_t fallback);

// The kernel of Implode (k above 0) and Explode (k below 0).
ImageHandle ReferenceImplosion(ImageHandle source, double k, int32_t cxp, int32_t cyp, uint32_t background);

}  // namespace kfx::test
