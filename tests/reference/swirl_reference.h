// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Swirl, pixel by pixel.
ImageHandle ReferenceSwirl(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
