// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Motion Blur, tap by tap; values: depth, radius, angle.
ImageHandle ReferenceMotionBlur(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
