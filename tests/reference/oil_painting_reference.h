// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Oil Painting, vote by vote; values: radius.
ImageHandle ReferenceOilPainting(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
