// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Obscure, tile by tile; values: level.
ImageHandle ReferenceObscure(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
