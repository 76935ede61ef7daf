// SPDX-License-Identifier: MIT
#include "kernels/zoom_samples.h"

#include <algorithm>

namespace kfx {

void FillZoomAxis(int32_t size, int32_t displacement, int32_t cycles, const ZoomScale& scale,
                  const ZoomAxis& axis) {
    const auto percent = static_cast<float>(displacement / 100.0);
    const int32_t middle = size / 2;
    const auto half = static_cast<float>(middle);
    for (int32_t t = 0; t < size; ++t) {
        int32_t* places = axis.places + static_cast<ptrdiff_t>(t) * cycles;
        places[0] = scale.origin + t * scale.step;
        int32_t i = 1;
        for (; i < cycles; ++i) {
            const double zoom = 1.0 - static_cast<float>(i) * percent / 100.0;
            const double position = (static_cast<float>(t) - half) * zoom + half;
            // Truncation makes every number above -1 at least 0.
            if (!(position > -1.0 && position < size)) break;
            places[i] = scale.origin + static_cast<int32_t>(position) * scale.step;
        }
        axis.counts[t] = i;
    }
}

void AverageZoomRow(const WorkingImage* from, const ZoomAxis& columns, const int32_t* rows, int32_t rowCount,
                    int32_t cycles, const Reciprocals& reciprocals, uint8_t* out) {
    const uint8_t* pixels = PixelsOf(from);
    const int32_t* column = columns.places;
    for (int32_t x = 0; x < from->width; ++x, column += cycles, out += 3) {
        const int32_t count = std::min(columns.counts[x], rowCount);
        PackedSums sums;
        for (int32_t i = 0; i < count; ++i) sums.Add(PixelBytes(pixels + rows[i] + column[i]));
        reciprocals.PutAverages(sums, count, out);
    }
}

void AverageZoomRowOfAnyDepth(const WorkingImage* from, const ZoomAxis& columns, const int32_t* rows,
                              int32_t rowCount, int32_t cycles, WorkingImage* to, int32_t y) {
    const int32_t* column = columns.places;
    for (int32_t x = 0; x < from->width; ++x, column += cycles) {
        const auto count = static_cast<uint32_t>(std::min(columns.counts[x], rowCount));
        uint32_t red = 0, green = 0, blue = 0;
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t value = GetDibPixel(from, column[i], rows[i]);
            red += RedOf(value);
            green += GreenOf(value);
            blue += BlueOf(value);
        }
        SetDibPixel(to, x, y, Rgb(red / count, green / count, blue / count));
    }
}

}  // namespace kfx
