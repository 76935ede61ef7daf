// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Neon, pixel by pixel.
ImageHandle ReferenceNeon(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
