// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Zoom Blur, sample by sample; values: displacement, cycles.
ImageHandle ReferenceZoomBlur(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
