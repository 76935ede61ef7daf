// SPDX-License-Identifier: MIT
// Each pixel depends on pixels before it. So only the places of the samples are computed for several pixels
// at once, namely for stretches of pixels that take the same samples. The averages are then computed pixel by
// pixel.
#include "kernels/arc_blur.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "kernels/packed_sums.h"

namespace kfx {
namespace {

constexpr int32_t kStretch = 64;  // pixels whose places are computed together; they fit the first-level cache
constexpr int32_t kOutside = INT32_MIN;

struct Blur {
    WorkingImage* image;
    const Arc* arc;
    const double* sinesByRow;    // sine * dy of each sample, for the current row
    const double* cosinesByRow;  // cosine * dy
    int32_t* places;             // kStretch for each sample
    uint32_t background;         // in the byte order of a row
    Reciprocals reciprocals;
};

// The offset of a sample from the image's first stored row, or kOutside.
KFX_INLINE int32_t PlaceOf(const WorkingImage* image, int32_t stride, double column, double row) {
    const auto x = static_cast<int32_t>(column);
    const auto y = static_cast<int32_t>(row);
    const bool inside = (x >= 0) & (x < image->width) & (y >= 0) & (y < image->height);
    // Unsigned: the offset of a place far outside a huge picture may overflow before it is discarded.
    const uint32_t place = static_cast<uint32_t>(image->height - 1 - y) * static_cast<uint32_t>(stride) +
                           3 * static_cast<uint32_t>(x);
    return inside ? static_cast<int32_t>(place) : kOutside;
}

// The places of every `step`-th sample of `count` pixels from x on; returns whether all lie inside.
KFX_INLINE bool FindPlaces(const Blur& blur, int32_t x, int32_t count, int32_t step) {
    const Arc& arc = *blur.arc;
    const auto stride = static_cast<int32_t>(StrideOf(blur.image));
    const WorkingImage image = *blur.image;
    int32_t signs = 0;
    int32_t* next = blur.places;
    for (int32_t i = 0; i < arc.count; i += step, next += kStretch) {
        const double cosine = arc.cosines[i], sine = arc.sines[i];
        const double sineDy = blur.sinesByRow[i], cosineDy = blur.cosinesByRow[i];
        const double centerX = arc.centerX, centerY = arc.centerY;
        int32_t* __restrict places = next;
        for (int32_t k = 0; k < count; ++k) {
            const double dx = (x + k) - centerX;
            places[k] = PlaceOf(&image, stride, cosine * dx + centerX - sineDy + 0.5,
                                sine * dx + centerY + cosineDy + 0.5);
            signs |= places[k];
        }
    }
    return signs >= 0;
}

KFX_INLINE void FindSteps(const Arc& arc, double dy, int32_t width, int32_t* __restrict steps) {
    const Arc copy = arc;
    for (int32_t x = 0; x < width; ++x) steps[x] = SampleStep(copy, x - copy.centerX, dy);
}

template <bool kAllInside>
void BlurStretch(const Blur& blur, int32_t count, int32_t samples, uint8_t* out) {
    const uint8_t* first = PixelsOf(blur.image);
    for (int32_t k = 0; k < count; ++k, out += 3) {
        PackedSums sums;
        const int32_t* place = blur.places + k;
        for (int32_t i = 0; i < samples; ++i, place += kStretch)
            sums.Add(kAllInside || *place != kOutside ? PixelBytes(first + *place) : blur.background);
        blur.reciprocals.PutAverages(sums, samples, out);
    }
}

}  // namespace

bool BlurArcs(WorkingImage* image, const Arc& arc, uint32_t background) {
    const auto count = static_cast<size_t>(arc.count);
    const Scratch<double> byRow(2 * count);
    const Scratch<int32_t> places(count * kStretch);
    const Scratch<int32_t> stepsOfRow(static_cast<size_t>(image->width));
    if (!byRow || !places || !stepsOfRow) return false;
    const int32_t* steps = stepsOfRow.address;
    Blur blur = {image, &arc, byRow.address, byRow.address + count, places.address, 0, {}};
    blur.background = BlueOf(background) | GreenOf(background) << 8 | RedOf(background) << 16;
    const auto findPlaces = Fastest<FindPlaces>();
    const auto findSteps = Fastest<FindSteps>();

    for (int32_t y = 0; y < image->height; ++y) {
        const double dy = y - arc.centerY;
        for (size_t i = 0; i < count; ++i) {
            byRow.address[i] = arc.sines[i] * dy;
            byRow.address[count + i] = arc.cosines[i] * dy;
        }
        uint8_t* row = PictureRow(image, y);
        findSteps(arc, dy, image->width, stepsOfRow.address);
        for (int32_t x = 0; x < image->width;) {
            const int32_t step = steps[x];
            int32_t end = x + 1;
            while (end < image->width && end - x < kStretch && steps[end] == step) ++end;
            const bool allInside = findPlaces(blur, x, end - x, step);
            (allInside ? BlurStretch<true> : BlurStretch<false>)(blur, end - x, (arc.count - 1) / step + 1,
                                                                 row + 3 * static_cast<size_t>(x));
            x = end;
        }
    }
    return true;
}

}  // namespace kfx
