// SPDX-License-Identifier: MIT
// The image scaler as plainly as possible: every pixel gathers its own contributions through the accessors.
#pragma once

#include "framework/working_image.h"

namespace kfx::test {

// Two filter passes with whole bytes between them; picks the heaviest contribution for palette images.
ImageHandle ReferenceResample(ImageHandle source, int32_t width, int32_t height, double blur);

}  // namespace kfx::test
