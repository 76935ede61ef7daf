// SPDX-License-Identifier: MIT
// Each pixel depends on pixels before it. So only the places of the samples are computed for several pixels
// at once, namely for stretches of pixels that take the same samples. The averages are then computed pixel by
// pixel. Most stretches have all samples inside the picture: for them no sample is compared with its borders.
#include "kernels/arc_blur.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "kernels/packed_sums.h"
#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

constexpr int32_t kStretch = 32;  // pixels whose places are computed together; they fit the first-level cache
constexpr int32_t kOutside = INT32_MIN;

struct Blur {
    WorkingImage* image;
    const Arc* arc;
    const double* deltas;        // dx of each column
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

// The places of every `step`-th sample of `count` pixels from x on, when all of them lie inside and none is
// the last stored pixel. False: they do not, and the places are of no use.
KFX_INLINE bool FindInnerPlaces(const Blur& blur, int32_t x, int32_t count, int32_t step) {
    const Arc& arc = *blur.arc;
    const auto stride = static_cast<uint32_t>(StrideOf(blur.image));
    const auto right = static_cast<uint32_t>(blur.image->width - 1);
    const auto bottom = static_cast<uint32_t>(blur.image->height - 1);
    const uint32_t last = bottom * stride + 3 * right;
    const double centerX = arc.centerX, centerY = arc.centerY;
    const double* deltas = blur.deltas + x;
    uint32_t signs = 0;
    int32_t* next = blur.places;
    for (int32_t i = 0; i < arc.count; i += step, next += kStretch) {
        const double cosine = arc.cosines[i], sine = arc.sines[i];
        const double sineDy = blur.sinesByRow[i], cosineDy = blur.cosinesByRow[i];
        int32_t* __restrict places = next;
        for (int32_t k = 0; k < count; ++k) {
            const double dx = deltas[k];
            const auto column =
                static_cast<uint32_t>(static_cast<int32_t>(cosine * dx + centerX - sineDy + 0.5));
            const auto row =
                static_cast<uint32_t>(static_cast<int32_t>(sine * dx + centerY + cosineDy + 0.5));
            const uint32_t stored = bottom - row;
            const uint32_t place = stored * stride + 3 * column;
            signs |= column | (right - column) | row | stored | (last - 1 - place);
            places[k] = static_cast<int32_t>(place);
        }
    }
    return static_cast<int32_t>(signs) >= 0;
}

// The same with kOutside for samples that lie outside.
KFX_INLINE void FindPlaces(const Blur& blur, int32_t x, int32_t count, int32_t step) {
    const Arc& arc = *blur.arc;
    const auto stride = static_cast<int32_t>(StrideOf(blur.image));
    const WorkingImage image = *blur.image;
    const double* deltas = blur.deltas + x;
    int32_t* next = blur.places;
    for (int32_t i = 0; i < arc.count; i += step, next += kStretch) {
        const double cosine = arc.cosines[i], sine = arc.sines[i];
        const double sineDy = blur.sinesByRow[i], cosineDy = blur.cosinesByRow[i];
        const double centerX = arc.centerX, centerY = arc.centerY;
        int32_t* __restrict places = next;
        for (int32_t k = 0; k < count; ++k)
            places[k] = PlaceOf(&image, stride, cosine * deltas[k] + centerX - sineDy + 0.5,
                                sine * deltas[k] + centerY + cosineDy + 0.5);
    }
}

KFX_INLINE void FindSteps(const Arc& arc, const double* deltas, double dy, int32_t width,
                          int32_t* __restrict steps) {
    const Arc copy = arc;
    for (int32_t x = 0; x < width; ++x) steps[x] = SampleStep(copy, deltas[x], dy);
}

void BlurStretch(const Blur& blur, int32_t count, int32_t samples, uint8_t* out) {
    const uint8_t* first = PixelsOf(blur.image);
    for (int32_t k = 0; k < count; ++k, out += 3) {
        PackedSums sums;
        const int32_t* place = blur.places + k;
        for (int32_t i = 0; i < samples; ++i, place += kStretch)
            sums.Add(*place != kOutside ? PixelBytes(first + *place) : blur.background);
        blur.reciprocals.PutAverages(sums, samples, out);
    }
}

// As BlurStretch where every sample is a pixel that another one follows. A pixel is read together with the
// byte after it: the pixel before it may have been written just now, and the processor would wait for that.
void BlurInside(const Blur& blur, int32_t count, int32_t samples, uint8_t* out) {
    const uint8_t* first = PixelsOf(blur.image);
    for (int32_t k = 0; k < count; ++k, out += 3) {
        PackedSums sums;
        const int32_t* place = blur.places + k;
        for (int32_t i = 0; i < samples; ++i, place += kStretch) {
            uint32_t bytes;
            std::memcpy(&bytes, first + *place, sizeof bytes);
            sums.Add(bytes);
        }
        blur.reciprocals.PutAverages(sums, samples, out);
    }
}

#if KFX_HAS_AVX2

// The sums of blue, green and red in the first three lanes.
KFX_AVX2 KFX_INLINE PackedSums SumsOf(__m128i lanes) {
    const auto words = static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi32(lanes, lanes)));
    PackedSums sums;
    sums.blueRed = static_cast<uint32_t>((words & 0xFFFF) | (words >> 16 & 0xFFFF0000));
    sums.green = static_cast<uint32_t>(words >> 16 & 0xFFFF);
    return sums;
}

KFX_AVX2 void BlurInsideAvx2(const Blur& blur, int32_t count, int32_t samples, uint8_t* out) {
    const uint8_t* first = PixelsOf(blur.image);
    for (int32_t k = 0; k < count; ++k, out += 3) {
        __m128i lanes = _mm_setzero_si128();
        const int32_t* place = blur.places + k;
        for (int32_t i = 0; i < samples; ++i, place += kStretch)
            lanes = _mm_add_epi32(lanes, _mm_cvtepu8_epi32(_mm_loadu_si32(first + *place)));
        blur.reciprocals.PutAverages(SumsOf(lanes), samples, out);
    }
}

KFX_AVX2 void BlurStretchAvx2(const Blur& blur, int32_t count, int32_t samples, uint8_t* out) {
    const uint8_t* beforeFirst = PixelsOf(blur.image) - 1;  // see PixelBytes
    const uint32_t background = blur.background << 8;
    const auto* outside = reinterpret_cast<const uint8_t*>(&background);
    for (int32_t k = 0; k < count; ++k, out += 3) {
        __m128i lanes = _mm_setzero_si128();
        const int32_t* place = blur.places + k;
        for (int32_t i = 0; i < samples; ++i, place += kStretch) {
            const uint8_t* from = *place == kOutside ? outside : beforeFirst + *place;
            lanes = _mm_add_epi32(lanes, _mm_cvtepu8_epi32(_mm_loadu_si32(from)));
        }
        blur.reciprocals.PutAverages(SumsOf(_mm_srli_si128(lanes, 4)), samples, out);
    }
}

#endif

using BlurPixels = void (*)(const Blur& blur, int32_t count, int32_t samples, uint8_t* out);

struct BlurWays {
    BlurPixels inside;
    BlurPixels any;
};

BlurWays ChooseBlurWays() {
#if KFX_HAS_AVX2
    if (UseAvx2()) return {BlurInsideAvx2, BlurStretchAvx2};
#endif
    return {BlurInside, BlurStretch};
}

}  // namespace

bool BlurArcs(WorkingImage* image, const Arc& arc, uint32_t background) {
    const auto count = static_cast<size_t>(arc.count);
    const Scratch<double> byRow(2 * count);
    const Scratch<double> deltas(static_cast<size_t>(image->width));
    const Scratch<int32_t> places(count * kStretch);
    const Scratch<int32_t> stepsOfRow(static_cast<size_t>(image->width));
    if (!byRow || !deltas || !places || !stepsOfRow) return false;
    const int32_t* steps = stepsOfRow.address;
    for (int32_t x = 0; x < image->width; ++x) deltas.address[x] = x - arc.centerX;
    Blur blur = {image, &arc, deltas.address, byRow.address, byRow.address + count, places.address, 0, {}};
    blur.background = BlueOf(background) | GreenOf(background) << 8 | RedOf(background) << 16;
    const auto findInnerPlaces = Fastest<FindInnerPlaces>();
    const auto findPlaces = Fastest<FindPlaces>();
    const auto findSteps = Fastest<FindSteps>();
    const BlurWays ways = ChooseBlurWays();

    for (int32_t y = 0; y < image->height; ++y) {
        const double dy = y - arc.centerY;
        for (size_t i = 0; i < count; ++i) {
            byRow.address[i] = arc.sines[i] * dy;
            byRow.address[count + i] = arc.cosines[i] * dy;
        }
        uint8_t* row = PictureRow(image, y);
        findSteps(arc, deltas.address, dy, image->width, stepsOfRow.address);
        for (int32_t x = 0; x < image->width;) {
            const int32_t step = steps[x];
            int32_t end = x + 1;
            while (end < image->width && end - x < kStretch && steps[end] == step) ++end;
            const bool inside = findInnerPlaces(blur, x, end - x, step);
            if (!inside) findPlaces(blur, x, end - x, step);
            (inside ? ways.inside : ways.any)(blur, end - x, (arc.count - 1) / step + 1,
                                              row + 3 * static_cast<size_t>(x));
            x = end;
        }
    }
    return true;
}

}  // namespace kfx
