// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "framework/working_image.h"

namespace kfx::test {

struct ReferencePalette {
    uint32_t colors;
    std::array<uint8_t, kPaletteBytes> bytes;
    uint32_t passes;  // of reduction
};

// The quantizer with a tree of nodes that are made one by one, run by run, in doubles.
ReferencePalette ReferenceQuantize(uint32_t limit, const std::vector<ImageHandle>& frames);

}  // namespace kfx::test
