// SPDX-License-Identifier: MIT
// The parts of a lens flare: the glows of the light, and its reflections on the line through the picture's
// centre.
#pragma once

#include "kernels/flare_painter.h"

namespace kfx {

// One of the reflections on the line from the light through the picture's centre.
struct FlareElement {
    float color[3];  // red, green, blue: 0 to 1
    float size;      // radius, pixels
    int32_t column;  // of the centre
    int32_t row;
    FlareKind kind;
};

constexpr int32_t kFlareElements = 19;

// The elements in painting order for a light at a column and row of a picture; `scale` in pixels.
void BuildFlareElements(int32_t lightX, int32_t lightY, int32_t width, int32_t height, double scale,
                        FlareElement elements[kFlareElements]);

// Paints the glows and then the elements of a light at a column and row, possibly outside the picture, onto
// an image of any depth. `scale` in pixels; `strengths` has room for a row.
void PaintFlare(WorkingImage* image, int32_t lightX, int32_t lightY, double scale, float* strengths);

}  // namespace kfx
