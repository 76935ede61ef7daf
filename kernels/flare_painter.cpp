// SPDX-License-Identifier: MIT
#include "kernels/flare_painter.h"

#include <algorithm>
#include <cmath>

#include "framework/cpu.h"
#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

// The part of a row between two columns.
struct Columns {
    int32_t first;
    int32_t end;
};

// How far a spot reaches, how far from its centre it begins and up to where it is of full strength, as shares
// of its radius.
struct Extent {
    double outer;
    double hole;
    double full;
};

Extent ExtentOf(FlareKind kind) {
    if (kind == FlareKind::Ring) return {1.04, 0.96, 0};
    if (kind == FlareKind::RingGlow) return {1.07, 0.93, 0};
    if (kind == FlareKind::Spot) return {1, 0, 0.85};
    return {1, 0, 0};
}

uint32_t BrightenChannel(uint32_t channel, float strength, float share) {
    const auto c = static_cast<float>(channel);
    return static_cast<uint32_t>(static_cast<int32_t>((255 - c) * strength * share + c)) & 255;
}

#if KFX_HAS_AVX2

// Eight of the 24 channels of eight pixels; strengths and shares stand in the lanes of their channels.
KFX_AVX2 inline __m256i BrightenEight(const uint8_t* channels, __m256 strengths, __m256 shares) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(channels));
    const __m256 c = _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(bytes));
    const __m256 missing = _mm256_sub_ps(_mm256_set1_ps(255), c);
    const __m256 added = _mm256_mul_ps(_mm256_mul_ps(missing, strengths), shares);
    return _mm256_cvttps_epi32(_mm256_add_ps(added, c));
}

KFX_AVX2 inline void StoreEight(__m256i values, uint8_t* channels) {
    const __m128i words =
        _mm_packus_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(channels), _mm_packus_epi16(words, words));
}

// Blends whole groups of eight pixels and returns how many pixels these are. Strengths lie between 0 and 1,
// so all results fit 8 bits.
KFX_AVX2 int32_t BrightenRowAvx2(uint8_t* row, const float* strengths, int32_t count, const float color[3]) {
    const float b = color[2], g = color[1], r = color[0];
    const __m256 shares0 = _mm256_setr_ps(b, g, r, b, g, r, b, g);
    const __m256 shares1 = _mm256_setr_ps(r, b, g, r, b, g, r, b);
    const __m256 shares2 = _mm256_setr_ps(g, r, b, g, r, b, g, r);
    const __m256i spread0 = _mm256_setr_epi32(0, 0, 0, 1, 1, 1, 2, 2);
    const __m256i spread1 = _mm256_setr_epi32(2, 3, 3, 3, 4, 4, 4, 5);
    const __m256i spread2 = _mm256_setr_epi32(5, 5, 6, 6, 6, 7, 7, 7);
    int32_t x = 0;
    for (; x + 8 <= count; x += 8, row += 24) {
        const __m256 eight = _mm256_loadu_ps(strengths + x);
        const __m256i first = BrightenEight(row, _mm256_permutevar8x32_ps(eight, spread0), shares0);
        const __m256i second = BrightenEight(row + 8, _mm256_permutevar8x32_ps(eight, spread1), shares1);
        const __m256i third = BrightenEight(row + 16, _mm256_permutevar8x32_ps(eight, spread2), shares2);
        StoreEight(first, row);
        StoreEight(second, row + 8);
        StoreEight(third, row + 16);
    }
    return x;
}

#endif

// Blends consecutive 24-bit pixels; strength 0 leaves a pixel as it is.
void BrightenRow(uint8_t* row, const float* strengths, int32_t count, const float color[3]) {
    int32_t x = 0;
#if KFX_HAS_AVX2
    if (UseAvx2()) x = BrightenRowAvx2(row, strengths, count, color);
#endif
    for (uint8_t* pixel = row + 3 * static_cast<size_t>(x); x < count; ++x, pixel += 3) {
        for (int i = 0; i < 3; ++i)
            pixel[i] = static_cast<uint8_t>(BrightenChannel(pixel[i], strengths[x], color[2 - i]));
    }
}

// Paints a run of a row; `full`: all of it at full strength.
void PaintRun(WorkingImage* image, const FlareSpot& spot, int32_t y, Columns run, bool full,
              float* strengths) {
    if (run.first >= run.end) return;
    const int32_t count = run.end - run.first;
    const FlareRun distances = {spot.kind, spot.radius, run.first - spot.column, y - spot.row, count};
    if (image->bitCount == 24) {
        if (full)
            std::fill_n(strengths, count, 1.0f);
        else
            FillStrengthsFast(distances, strengths);
        BrightenRow(PictureRow(image, y) + 3 * static_cast<size_t>(run.first), strengths, count, spot.color);
        return;
    }
    FillStrengths(distances, strengths);
    for (int32_t i = 0; i < count; ++i)
        if (strengths[i] != kUnpainted) BrightenPixel(image, strengths[i], spot.color, run.first + i, y);
}

int32_t Clamp(double value, int32_t most) {
    return value < 0 ? 0 : value > most ? most : static_cast<int32_t>(value);
}

// The columns of row y within `radius` of the spot's centre. `generous` adds up to one column on either side.
// Empty if there are none.
Columns ColumnsWithin(double radius, const FlareSpot& spot, int32_t y, int32_t width, bool generous) {
    const double away = static_cast<double>(y) - spot.row;
    const double square = radius * radius - away * away;
    if (radius <= 0 || square < 0) return {0, 0};
    const double half = std::sqrt(square);
    if (generous)
        return {Clamp(std::floor(spot.column - half), width),
                Clamp(std::ceil(spot.column + half) + 1, width)};
    return {Clamp(std::ceil(spot.column - half), width), Clamp(std::floor(spot.column + half) + 1, width)};
}

}  // namespace

void BrightenPixel(WorkingImage* image, float strength, const float color[3], int32_t x, int32_t y) {
    const uint32_t pixel = GetDibPixel(image, x, y);
    SetDibPixel(image, x, y,
                Rgb(BrightenChannel(RedOf(pixel), strength, color[0]),
                    BrightenChannel(GreenOf(pixel), strength, color[1]),
                    BrightenChannel(BlueOf(pixel), strength, color[2])));
}

void PaintFlareSpot(WorkingImage* image, const FlareSpot& spot, float* strengths) {
    // All borders are one pixel on the safe side; between them each pixel is tested for itself.
    const Extent extent = ExtentOf(spot.kind);
    const double outer = spot.radius * extent.outer + 1;
    const bool ring = extent.hole > 0;
    const double inner = spot.radius * (ring ? extent.hole : extent.full) - 1;
    const int32_t endRow = Clamp(std::ceil(spot.row + outer) + 1, image->height);
    for (int32_t y = Clamp(std::floor(spot.row - outer), image->height); y < endRow; ++y) {
        const Columns all = ColumnsWithin(outer, spot, y, image->width, true);
        Columns core = ColumnsWithin(inner, spot, y, image->width, false);
        if (core.first >= core.end) core = {all.end, all.end};
        PaintRun(image, spot, y, {all.first, core.first}, false, strengths);
        if (!ring) PaintRun(image, spot, y, core, true, strengths);
        PaintRun(image, spot, y, {core.end, all.end}, false, strengths);
    }
}

}  // namespace kfx
