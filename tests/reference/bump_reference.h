// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Bump, pixel by pixel.
ImageHandle ReferenceBump(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
