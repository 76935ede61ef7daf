// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "framework/working_image.h"

namespace kfx::bench {

// One kind of picture. Kernels are fast where an estimate is certain, and some contents leave it in doubt
// nearly everywhere: results that lie on a level, or values that repeat.
struct Content {
    const char* name;
    uint32_t (*pixelAt)(int32_t x, int32_t y);  // 0x00BBGGRR
};

// The first is what MakeBenchPicture() draws.
extern const Content kContents[];
extern const size_t kContentCount;

// A 24-bit picture of this content. The same bytes for the same size on every machine. The caller owns it.
ImageHandle MakePicture(const Content& content, int32_t width, int32_t height);

// A 24-bit picture such as a camera makes: soft shapes of several sizes, hard edges and a little grain. The
// same bytes for the same size on every machine. The caller owns it.
ImageHandle MakeBenchPicture(int32_t width, int32_t height);

}  // namespace kfx::bench
