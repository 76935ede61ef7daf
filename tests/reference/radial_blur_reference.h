// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Radial Blur, sample by sample; values: angle.
ImageHandle ReferenceRadialBlur(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
