// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Implode, pixel by pixel.
ImageHandle ReferenceImplode(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
