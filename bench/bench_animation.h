// SPDX-License-Identifier: MIT
#pragma once

#include "framework/frame_list.h"

namespace kfx::bench {

// An animation such as a camera makes: a still scene with a patch walking over it and a little flicker. The
// same bytes on every machine. The caller frees the list.
FrameList MakeBenchAnimation(int32_t width, int32_t height, int32_t frames);

}  // namespace kfx::bench
