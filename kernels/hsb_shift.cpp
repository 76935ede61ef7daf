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

// Whether the single precision of a grey's product shows in the byte of some grey.
bool GreyDiffers(double brightness) {
    for (int32_t grey = 0; grey < 256; ++grey) {
        const double product = std::fmin(static_cast<float>(grey / 255.0) * brightness, 1) * 255;
        if (static_cast<int32_t>(product) != static_cast<int32_t>(static_cast<float>(product))) return true;
    }
    return false;
}

#if KFX_HAS_AVX2

// What is the same for all pixels of a row.
struct ShiftLanes {
    __m256d hue;
    __m256d saturation;
    __m256d brightness;
    bool allGrey;      // the saturation becomes 0 everywhere
    bool greyDiffers;  // the single precision of a grey's product shows in some byte
};

// Eight pixels, each as the channels that place its hue.
struct ChannelLanes {
    __m256 most;
    __m256 least;
    __m256 minuend;  // the hue is the sector plus minuend less subtrahend, over most less least
    __m256 subtrahend;
    __m256 sector;
    __m256 grey;
};

// Four pixels' bytes before each is put into its channel.
struct ByteLanes {
    __m128i level;    // of the strongest channel
    __m128i weakest;  // p
    __m128i between;  // q or t, whichever the sector shows
    __m128i sector;   // 0 to 4; 5 is any other number
};

// A channel of eight pixels, from 0 to 1, whose bytes `pick` chooses. The quotient c / 255 is a product with
// 1 / 255 in two parts, of which the first product is exact. For each of the 256 values this gives the same
// as a division in double precision that is then rounded.
KFX_AVX2 KFX_INLINE __m256 LoadChannel(__m256i pixels, __m256i pick) {
    constexpr float kUpper = 0.00392150878906250f;  // 257 / 65536
    constexpr float kLower = static_cast<float>(1 / 255.0 - kUpper);
    const __m256 c = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(pixels, pick));
    return _mm256_add_ps(_mm256_mul_ps(c, _mm256_set1_ps(kUpper)), _mm256_mul_ps(c, _mm256_set1_ps(kLower)));
}

KFX_AVX2 KFX_INLINE ChannelLanes LoadPixels(const uint8_t* row) {
    const __m256i pixels =
        _mm256_inserti128_si256(_mm256_castsi128_si256(LoadBytes(row)), LoadBytes(row + 12), 1);
    const __m256i pickBlue = _mm256_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1,  //
                                              0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1);
    const __m256 blue = LoadChannel(pixels, pickBlue);
    const __m256 green = LoadChannel(pixels, _mm256_add_epi8(pickBlue, _mm256_set1_epi32(1)));
    const __m256 red = LoadChannel(pixels, _mm256_add_epi8(pickBlue, _mm256_set1_epi32(2)));
    ChannelLanes lanes;
    lanes.most = _mm256_max_ps(red, _mm256_max_ps(green, blue));
    lanes.least = _mm256_min_ps(red, _mm256_min_ps(green, blue));
    lanes.grey = _mm256_cmp_ps(lanes.most, lanes.least, _CMP_EQ_OQ);
    const __m256 redIsMost = _mm256_cmp_ps(red, lanes.most, _CMP_EQ_OQ);
    const __m256 greenIsMost = _mm256_cmp_ps(green, lanes.most, _CMP_EQ_OQ);
    // From the last case to the first.
    lanes.minuend = _mm256_blendv_ps(_mm256_blendv_ps(red, blue, greenIsMost), green, redIsMost);
    lanes.subtrahend = _mm256_blendv_ps(_mm256_blendv_ps(green, red, greenIsMost), blue, redIsMost);
    lanes.sector =
        _mm256_andnot_ps(redIsMost, _mm256_blendv_ps(_mm256_set1_ps(4), _mm256_set1_ps(2), greenIsMost));
    return lanes;
}

KFX_AVX2 KFX_INLINE __m256d MaskOf(__m128i words) {
    return _mm256_castsi256_pd(_mm256_cvtepi32_epi64(words));
}

KFX_AVX2 KFX_INLINE __m128i ToBytes(__m256d share) {
    return _mm256_cvttpd_epi32(_mm256_mul_pd(share, _mm256_set1_pd(255)));
}

// Every share lies from 0 to 1, because neither factor of the shift is negative: nothing has to be clamped.
KFX_AVX2 KFX_INLINE ByteLanes ShiftFour(__m128 most, __m128 least, __m128 minuend, __m128 subtrahend,
                                        __m128 place, __m128 grey, const ShiftLanes& shift) {
    const __m256d one = _mm256_set1_pd(1), zero = _mm256_setzero_pd(), sixty = _mm256_set1_pd(60);
    const __m256d tiny = _mm256_set1_pd(1e-300);  // a divisor where 0 / 0 is to be 0
    const __m256d greatest = _mm256_cvtps_pd(most);
    const __m256d delta = _mm256_sub_pd(greatest, _mm256_cvtps_pd(least));
    const __m256d difference = _mm256_sub_pd(_mm256_cvtps_pd(minuend), _mm256_cvtps_pd(subtrahend));
    __m256d hue =
        _mm256_add_pd(_mm256_div_pd(difference, _mm256_max_pd(delta, tiny)), _mm256_cvtps_pd(place));
    hue = _mm256_mul_pd(hue, sixty);
    const __m256d negative = _mm256_cmp_pd(hue, zero, _CMP_LT_OQ);
    hue = _mm256_add_pd(hue, _mm256_and_pd(negative, _mm256_set1_pd(360)));
    const __m256d position = _mm256_div_pd(_mm256_add_pd(hue, shift.hue), sixty);
    const __m256d sector = _mm256_floor_pd(position);
    const __m256d fraction = _mm256_sub_pd(position, sector);
    const __m256d ratio = _mm256_div_pd(delta, _mm256_max_pd(greatest, tiny));
    const __m256d s = _mm256_min_pd(_mm256_mul_pd(ratio, shift.saturation), one);
    const __m256d v = _mm256_min_pd(_mm256_mul_pd(greatest, shift.brightness), one);

    ByteLanes bytes;
    // Numbers beyond 32 bits convert to the most negative one; as unsigned numbers all but 0 to 4 are 5 or
    // more.
    bytes.sector = _mm_min_epu32(_mm256_cvttpd_epi32(sector), _mm_set1_epi32(5));
    // Even sectors show t, all others q.
    const __m256d odd = MaskOf(_mm_srai_epi32(_mm_slli_epi32(bytes.sector, 31), 31));
    const __m256d share = _mm256_blendv_pd(_mm256_sub_pd(one, fraction), fraction, odd);
    bytes.weakest = ToBytes(_mm256_mul_pd(_mm256_sub_pd(one, s), v));
    bytes.between = ToBytes(_mm256_mul_pd(_mm256_sub_pd(one, _mm256_mul_pd(share, s)), v));
    bytes.level = ToBytes(v);
    if (shift.greyDiffers) {
        const __m128i single = _mm_cvttps_epi32(_mm256_cvtpd_ps(_mm256_mul_pd(v, _mm256_set1_pd(255))));
        bytes.level = _mm_blendv_epi8(bytes.level, single, _mm_castps_si128(grey));
    }
    return bytes;
}

KFX_AVX2 KFX_INLINE __m256i Join(__m128i low, __m128i high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

// Eight pixels of blue, green, red and nothing.
KFX_AVX2 KFX_INLINE __m256i ShiftEight(const ChannelLanes& lanes, const ShiftLanes& shift) {
    const __m256 grey = shift.allGrey ? _mm256_castsi256_ps(_mm256_set1_epi32(-1)) : lanes.grey;
    const auto upper = [](__m256 both) KFX_AVX2 { return _mm256_extractf128_ps(both, 1); };
    const ByteLanes low =
        ShiftFour(_mm256_castps256_ps128(lanes.most), _mm256_castps256_ps128(lanes.least),
                  _mm256_castps256_ps128(lanes.minuend), _mm256_castps256_ps128(lanes.subtrahend),
                  _mm256_castps256_ps128(lanes.sector), _mm256_castps256_ps128(grey), shift);
    const ByteLanes high = ShiftFour(upper(lanes.most), upper(lanes.least), upper(lanes.minuend),
                                     upper(lanes.subtrahend), upper(lanes.sector), upper(grey), shift);
    // The three bytes of a pixel become one word, out of which each sector picks its channels: one control
    // word for each of 0 to 4, for all others and for greys.
    __m256i words =
        _mm256_or_si256(Join(low.level, high.level), _mm256_slli_epi32(Join(low.weakest, high.weakest), 8));
    words = _mm256_or_si256(words, _mm256_slli_epi32(Join(low.between, high.between), 16));
    const __m256i controls =
        _mm256_setr_epi32(0x000201, 0x020001, 0x010002, 0x010200, 0x020100, 0x000102, 0x000000, 0x000000);
    const __m256i number =
        _mm256_blendv_epi8(Join(low.sector, high.sector), _mm256_set1_epi32(6), _mm256_castps_si256(grey));
    const __m256i places = _mm256_setr_epi32(0, 0x04040404, 0x08080808, 0x0C0C0C0C,  //
                                             0, 0x04040404, 0x08080808, 0x0C0C0C0C);
    const __m256i picks = _mm256_add_epi8(_mm256_permutevar8x32_epi32(controls, number), places);
    return _mm256_shuffle_epi8(words, picks);
}

// Shifts eight pixels at a time, as long as no load reads beyond the row. Returns how many pixels these are.
KFX_AVX2 int32_t ShiftPixelsAvx2(uint8_t* row, int32_t count, const HsbShift& shift) {
    const ShiftLanes lanes = {.hue = _mm256_set1_pd(shift.hue),
                              .saturation = _mm256_set1_pd(shift.saturation),
                              .brightness = _mm256_set1_pd(shift.brightness),
                              .allGrey = shift.saturation == 0,
                              .greyDiffers = shift.greyDiffers};
    int32_t x = 0;
    for (; x + 10 <= count; x += 8, row += 24) {
        const __m256i pixels = ShiftEight(LoadPixels(row), lanes);
        StoreFourPixels(_mm256_castsi256_si128(pixels), row);
        StoreFourPixels(_mm256_extracti128_si256(pixels, 1), row + 12);
    }
    return x;
}

#endif

}  // namespace

HsbShift MakeHsbShift(int32_t hue, int32_t saturation, int32_t brightness) {
    HsbShift shift = {.hue = hue - 180.0,
                      .saturation = 2 * (static_cast<float>(saturation) / 200),
                      .brightness = 2 * (static_cast<float>(brightness) / 200),
                      .greyDiffers = false};
    shift.greyDiffers = GreyDiffers(shift.brightness);
    return shift;
}

void ShiftHsbRow(uint8_t* row, int32_t width, const HsbShift& shift) {
    int32_t done = 0;
#if KFX_HAS_AVX2
    if (UseAvx2() && shift.saturation >= 0 && shift.brightness >= 0)
        done = ShiftPixelsAvx2(row, width, shift);
#endif
    ShiftPixels(row + 3 * static_cast<size_t>(done), width - done, shift);
}

}  // namespace kfx
