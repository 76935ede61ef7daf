// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// Lens Flare, every glow and element at every pixel.
ImageHandle ReferenceLensFlare(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
