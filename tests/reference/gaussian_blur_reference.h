// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Gaussian Blur, line by line; values: radius, depth.
ImageHandle ReferenceGaussianBlur(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
