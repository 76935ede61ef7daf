// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"
#include "kernels/flare_painter.h"

namespace kfx {

// One of the elements strung along the line from the light through the picture's centre.
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

// Paints the flare of a light in a camera's lens. The light stands at `centerX` and `centerY` percent of
// width and height; `intensity` is the flare's scale in percent of the longer side; a scale below one pixel
// paints nothing. Any depth, though only 24 and 32 bits look like anything. A new image, or null when memory
// ran out.
ImageHandle ApplyLensFlare(ImageHandle source, int32_t centerX, int32_t centerY, int32_t intensity);

extern const EffectRecord kLensFlareEffect;

}  // namespace kfx
