// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Ripple, pixel by pixel.
ImageHandle ReferenceRipple(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
