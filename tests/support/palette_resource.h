// SPDX-License-Identifier: MIT
// The palettes that travel as raw data resources of the module.
#pragma once

#include <array>

#include "builder/fixed_palettes.h"

namespace kfx::test {

constexpr size_t kPaletteResourceBytes = 853;

// A palette as the bytes of such a resource.
std::array<uint8_t, kPaletteResourceBytes> MakePaletteResource(const PaletteTable& palette);

}  // namespace kfx::test
