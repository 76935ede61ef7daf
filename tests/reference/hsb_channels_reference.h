// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// HSB and Channels, pixel by pixel, a new picture for each stage.
ImageHandle ReferenceHsbChannels(ImageHandle source, const KernelInput& input);

}  // namespace kfx::test
