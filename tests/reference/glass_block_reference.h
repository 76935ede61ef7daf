// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Glass Block, pixel by pixel; values: size.
ImageHandle ReferenceGlassBlock(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
