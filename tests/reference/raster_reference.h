// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Raster, pixel by pixel.
ImageHandle ReferenceRaster(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
