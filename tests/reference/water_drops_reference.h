// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Water Drops, pixel by pixel, two numbers from the C runtime's generator for each.
ImageHandle ReferenceWaterDrops(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
