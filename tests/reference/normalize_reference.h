// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Normalize of one frame by itself, pixel by pixel.
ImageHandle ReferenceNormalize(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
