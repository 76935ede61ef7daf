// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Solarize, pixel by pixel.
ImageHandle ReferenceSolarize(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
