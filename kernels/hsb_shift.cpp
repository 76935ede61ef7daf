// SPDX-License-Identifier: MIT
#include "kernels/hsb_shift.h"

#include <cmath>

#include "framework/cpu.h"
#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

struct Hsb {
    double hue;  // degrees; any number, not wrapped into the circle
    double saturation;
    double brightness;
};

Hsb ToHsb(float red, float green, float blue) {
    const double greatest = red > green ? (red > blue ? red : blue) : (green > blue ? green : blue);
    const double least = red < green ? (red < blue ? red : blue) : (green < blue ? green : blue);
    Hsb color = {-1, 0, greatest};
    if (greatest == 0) return color;
    const double delta = greatest - least;
    color.saturation = delta / greatest;
    const double divisor = delta == 0 ? 1 : delta;
    if (red == greatest)
        color.hue = (double{green} - double{blue}) / divisor;
    else if (green == greatest)
        color.hue = (double{blue} - double{red}) / divisor + 2;
    else
        color.hue = (double{red} - double{green}) / divisor + 4;
    color.hue *= 60;
    if (color.hue < 0) color.hue += 360;
    return color;
}

uint8_t ToByte(double value) { return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value); }

void PutRgb(uint8_t* pixel, double red, double green, double blue) {
    pixel[0] = ToByte(blue * 255);
    pixel[1] = ToByte(green * 255);
    pixel[2] = ToByte(red * 255);
}

void PutHsb(uint8_t* pixel, const Hsb& color) {
    const double saturation = color.saturation > 1 ? 1 : color.saturation;
    const double v = color.brightness > 1 ? 1 : color.brightness;
    if (saturation == 0) {
        pixel[0] = pixel[1] = pixel[2] = ToByte(static_cast<float>(v * 255));
        return;
    }
    const double position = color.hue / 60;
    const double sector = std::floor(position);
    const double fraction = position - sector;
    const double p = (1 - saturation) * v;
    const double q = (1 - fraction * saturation) * v;
    const double t = (1 - (1 - fraction) * saturation) * v;
    if (sector == 0)
        PutRgb(pixel, v, t, p);
    else if (sector == 1)
        PutRgb(pixel, q, v, p);
    else if (sector == 2)
        PutRgb(pixel, p, v, t);
    else if (sector == 3)
        PutRgb(pixel, p, q, v);
    else if (sector == 4)
        PutRgb(pixel, t, p, v);
    else
        PutRgb(pixel, v, p, q);
}

void ShiftPixels(uint8_t* row, int32_t count, const HsbShift& shift) {
    for (int32_t x = 0; x < count; ++x, row += 3) {
        Hsb color = ToHsb(static_cast<float>(row[2] / 255.0), static_cast<float>(row[1] / 255.0),
                          static_cast<float>(row[0] / 255.0));
        color.hue += shift.hue;
        color.saturation *= shift.saturation;
        color.brightness *= shift.brightness;
        PutHsb(row, color);
    }
}

#if KFX_HAS_AVX2

// Four pixels in the lanes of each register.
struct HsbLanes {
    __m256d hue;
    __m256d saturation;
    __m256d brightness;
};

// The bytes at `offset` of four pixels, as channels from 0 to 1. The quotient c / 255 is a product with 1 /
// 255 in two parts, of which the first product is exact. For each of the 256 values this gives the same as a
// division in double precision that is then rounded.
KFX_AVX2 inline __m128 LoadChannel(__m128i pixels, char offset) {
    constexpr float kUpper = 0.00392150878906250f;  // 257 / 65536
    constexpr float kLower = static_cast<float>(1 / 255.0 - kUpper);
    const __m128i spread = _mm_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1);
    const __m128i moved = _mm_add_epi8(spread, _mm_set1_epi32(offset));
    const __m128 c = _mm_cvtepi32_ps(_mm_shuffle_epi8(pixels, moved));
    return _mm_add_ps(_mm_mul_ps(c, _mm_set1_ps(kUpper)), _mm_mul_ps(c, _mm_set1_ps(kLower)));
}

KFX_AVX2 inline HsbLanes ToHsbLanes(__m128 red, __m128 green, __m128 blue) {
    const __m128 most = _mm_max_ps(red, _mm_max_ps(green, blue));
    const __m128 redIsMost = _mm_cmpeq_ps(red, most);
    const __m128 greenIsMost = _mm_cmpeq_ps(green, most);
    // The hue's sector and the two channels that place it there, from the last case to the first.
    __m128 minuend = _mm_blendv_ps(_mm_blendv_ps(red, blue, greenIsMost), green, redIsMost);
    __m128 subtrahend = _mm_blendv_ps(_mm_blendv_ps(green, red, greenIsMost), blue, redIsMost);
    const __m128 sector =
        _mm_andnot_ps(redIsMost, _mm_blendv_ps(_mm_set1_ps(4), _mm_set1_ps(2), greenIsMost));

    const __m256d greatest = _mm256_cvtps_pd(most);
    const __m256d delta = _mm256_sub_pd(greatest, _mm256_cvtps_pd(_mm_min_ps(red, _mm_min_ps(green, blue))));
    const __m256d zero = _mm256_setzero_pd();
    const __m256d none = _mm256_cmp_pd(delta, zero, _CMP_EQ_OQ);
    const __m256d divisor = _mm256_or_pd(delta, _mm256_and_pd(none, _mm256_set1_pd(1)));
    const __m256d difference = _mm256_sub_pd(_mm256_cvtps_pd(minuend), _mm256_cvtps_pd(subtrahend));
    HsbLanes lanes;
    lanes.hue = _mm256_add_pd(_mm256_div_pd(difference, divisor), _mm256_cvtps_pd(sector));
    lanes.hue = _mm256_mul_pd(lanes.hue, _mm256_set1_pd(60));
    const __m256d negative = _mm256_cmp_pd(lanes.hue, zero, _CMP_LT_OQ);
    lanes.hue = _mm256_add_pd(lanes.hue, _mm256_and_pd(negative, _mm256_set1_pd(360)));
    // Black's 0 / 0 becomes no saturation.
    lanes.saturation =
        _mm256_and_pd(_mm256_div_pd(delta, greatest), _mm256_cmp_pd(greatest, zero, _CMP_GT_OQ));
    lanes.brightness = greatest;
    return lanes;
}

KFX_AVX2 inline __m128i ToBytes(__m256d scaled) {
    const __m256d floored = _mm256_max_pd(scaled, _mm256_setzero_pd());
    return _mm256_cvttpd_epi32(_mm256_min_pd(floored, _mm256_set1_pd(255)));
}

// Four pixels of blue, green, red and nothing.
KFX_AVX2 inline __m128i ToRgbLanes(const HsbLanes& lanes) {
    const __m256d one = _mm256_set1_pd(1);
    const __m256d scale = _mm256_set1_pd(255);
    const __m256d s = _mm256_min_pd(lanes.saturation, one);
    const __m256d v = _mm256_min_pd(lanes.brightness, one);
    const __m256d position = _mm256_div_pd(lanes.hue, _mm256_set1_pd(60));
    const __m256d sector = _mm256_floor_pd(position);
    const __m256d f = _mm256_sub_pd(position, sector);
    const __m256d p = _mm256_mul_pd(_mm256_sub_pd(one, s), v);
    const __m256d q = _mm256_mul_pd(_mm256_sub_pd(one, _mm256_mul_pd(f, s)), v);
    const __m256d t = _mm256_mul_pd(_mm256_sub_pd(one, _mm256_mul_pd(_mm256_sub_pd(one, f), s)), v);
    // A grey's product is held in single precision.
    const __m256d grey = _mm256_cmp_pd(s, _mm256_setzero_pd(), _CMP_EQ_OQ);
    const __m256d scaledV = _mm256_mul_pd(v, scale);
    const __m256d level = _mm256_blendv_pd(scaledV, _mm256_cvtps_pd(_mm256_cvtpd_ps(scaledV)), grey);

    // v, p, q and t become the bytes of one word a pixel, out of which each sector picks its channels: one
    // control word a sector, for 0 to 4, for all others and for greys.
    __m128i words = _mm_or_si128(ToBytes(level), _mm_slli_epi32(ToBytes(_mm256_mul_pd(p, scale)), 8));
    words = _mm_or_si128(words, _mm_slli_epi32(ToBytes(_mm256_mul_pd(q, scale)), 16));
    words = _mm_or_si128(words, _mm_slli_epi32(ToBytes(_mm256_mul_pd(t, scale)), 24));
    const __m256i controls =
        _mm256_setr_epi32(0x000301, 0x020001, 0x010003, 0x010200, 0x030100, 0x000102, 0x000000, 0x000000);
    // Numbers beyond 32 bits convert to the most negative one; as unsigned numbers all but 0 to 4 are 5 or
    // more.
    __m128i number = _mm_min_epu32(_mm256_cvttpd_epi32(sector), _mm_set1_epi32(5));
    const __m256i narrow =
        _mm256_permutevar8x32_epi32(_mm256_castpd_si256(grey), _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6));
    number = _mm_blendv_epi8(number, _mm_set1_epi32(6), _mm256_castsi256_si128(narrow));
    const __m128i picks =
        _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(controls, _mm256_castsi128_si256(number)));
    const __m128i places = _mm_setr_epi32(0, 0x04040404, 0x08080808, 0x0C0C0C0C);
    return _mm_shuffle_epi8(words, _mm_add_epi8(picks, places));
}

// Shifts four pixels at a time, as long as no load reads beyond the row. Returns how many pixels these are.
KFX_AVX2 int32_t ShiftPixelsAvx2(uint8_t* row, int32_t count, const HsbShift& shift) {
    const __m256d hue = _mm256_set1_pd(shift.hue);
    const __m256d saturation = _mm256_set1_pd(shift.saturation);
    const __m256d brightness = _mm256_set1_pd(shift.brightness);
    int32_t x = 0;
    for (; x + 6 <= count; x += 4, row += 12) {
        const __m128i pixels = LoadBytes(row);
        HsbLanes lanes = ToHsbLanes(LoadChannel(pixels, 2), LoadChannel(pixels, 1), LoadChannel(pixels, 0));
        lanes.hue = _mm256_add_pd(lanes.hue, hue);
        lanes.saturation = _mm256_mul_pd(lanes.saturation, saturation);
        lanes.brightness = _mm256_mul_pd(lanes.brightness, brightness);
        StoreFourPixels(ToRgbLanes(lanes), row);
    }
    return x;
}

#endif

}  // namespace

HsbShift MakeHsbShift(int32_t hue, int32_t saturation, int32_t brightness) {
    return {hue - 180.0, 2 * (static_cast<float>(saturation) / 200),
            2 * (static_cast<float>(brightness) / 200)};
}

void ShiftHsbRow(uint8_t* row, int32_t width, const HsbShift& shift) {
    int32_t done = 0;
#if KFX_HAS_AVX2
    if (UseAvx2()) done = ShiftPixelsAvx2(row, width, shift);
#endif
    ShiftPixels(row + 3 * static_cast<size_t>(done), width - done, shift);
}

}  // namespace kfx
