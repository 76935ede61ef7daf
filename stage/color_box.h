// SPDX-License-Identifier: MIT
// The box in which a colour is chosen from a palette, or from all colours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <windows.h>

namespace kfx::stage {

constexpr size_t kOfferedColors = 256;

enum ColorControl { kSwatches = 700, kColorText, kOtherColor };

// Asks for a colour (0x00BBGGRR). `palette` is kOfferedColors red-green-blue triples, all of which are
// offered; any other colour can be had as well. False: the user cancelled.
bool ChooseColorFrom(HWND owner, const uint8_t* palette, uint32_t* color);

// The triple of the palette that comes nearest to the colour; the first of several.
size_t NearestColor(const uint8_t* palette, uint32_t color);

// "Colour 18 of 256: red 12, green 200, blue 3 (#0CC803)".
std::string ColorText(const uint8_t* palette, size_t row);

}  // namespace kfx::stage
