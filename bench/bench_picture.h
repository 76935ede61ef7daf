// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"

namespace kfx::bench {

// A 24-bit picture such as a camera makes: soft shapes of several sizes, hard edges and a little grain. The
// same bytes for the same size on every machine. The caller owns it.
ImageHandle MakeBenchPicture(int32_t width, int32_t height);

}  // namespace kfx::bench
