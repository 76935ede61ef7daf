// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Emboss, pixel by pixel; values: radius, depth.
ImageHandle ReferenceEmboss(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
