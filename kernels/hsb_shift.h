// SPDX-License-Identifier: MIT
// Colours by hue, saturation and brightness (the hexagonal "HSV" model of A. R. Smith, "Color Gamut Transform
// Pairs", 1978), shifted in place.
#pragma once

#include <cstdint>

namespace kfx {

struct HsbShift {
    double hue;        // degrees added
    float saturation;  // factors
    float brightness;
    bool greyDiffers;  // a grey's product is held in single precision, which shows in some byte
};

// From slider positions; 180, 100 and 100 change nothing.
HsbShift MakeHsbShift(int32_t hue, int32_t saturation, int32_t brightness);

// Shifts `width` pixels of blue, green and red bytes.
void ShiftHsbRow(uint8_t* row, int32_t width, const HsbShift& shift);

}  // namespace kfx
