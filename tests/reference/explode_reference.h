// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Explode, pixel by pixel.
ImageHandle ReferenceExplode(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
