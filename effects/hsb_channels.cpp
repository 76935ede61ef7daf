// SPDX-License-Identifier: MIT
// HSB and Channels: inverts the channels, rearranges them by one of seven patterns, and shifts hue and scales
// saturation and brightness; each stage by choice, in this order. A shifted hue is not wrapped back into the
// circle: beyond either end it takes the last sector's colours. The "Invert colors" box is bound like a
// slider. Both are intended.
#include "effects/hsb_channels.h"

#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "kernels/hsb_shift.h"
#include "resources/panel_controls.h"
#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

// For each pattern the source bytes of blue, green and red, where byte 0 is blue, 1 green and 2 red.
constexpr uint8_t kPatterns[][3] = {{2, 1, 0}, {0, 2, 1}, {1, 0, 2}, {2, 2, 1},
                                    {1, 1, 2}, {1, 0, 0}, {0, 1, 1}};
constexpr int32_t kPatternCount = 7;
constexpr uint8_t kInPlace[3] = {0, 1, 2};

// Inverts all channels by `inversion` 255, none by 0, and puts each pixel's channels where the pattern wants
// them.
void ArrangePixels(const uint8_t* from, size_t count, uint8_t inversion, const uint8_t pattern[3],
                   uint8_t* to) {
    for (size_t x = 0; x < count; ++x, from += 3, to += 3)
        for (int i = 0; i < 3; ++i) to[i] = static_cast<uint8_t>(from[pattern[i]] ^ inversion);
}

#if KFX_HAS_AVX2

// The same by five pixels, for as many as can be loaded so without reading beyond the row; how many. The
// sixteenth byte of each store is overwritten by the next one.
KFX_AVX2 size_t ArrangePixelsAvx2(const uint8_t* from, size_t count, uint8_t inversion,
                                  const uint8_t pattern[3], uint8_t* to) {
    alignas(16) uint8_t picks[16] = {};
    for (uint8_t i = 0; i < 15; ++i) picks[i] = static_cast<uint8_t>(i - i % 3 + pattern[i % 3]);
    const __m128i pick = _mm_load_si128(reinterpret_cast<const __m128i*>(picks));
    const __m128i flip = _mm_set1_epi8(static_cast<char>(inversion));
    size_t x = 0;
    for (; x + 6 <= count; x += 5, from += 15, to += 15) {
        const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_xor_si128(_mm_shuffle_epi8(pixels, pick), flip));
    }
    return x;
}

#endif

void ArrangeRow(const uint8_t* from, int32_t width, bool invert, const uint8_t pattern[3], uint8_t* to) {
    const auto count = static_cast<size_t>(width);
    const uint8_t inversion = invert ? 255 : 0;
    size_t done = 0;
#if KFX_HAS_AVX2
    if (UseAvx2()) done = ArrangePixelsAvx2(from, count, inversion, pattern, to);
#endif
    ArrangePixels(from + 3 * done, count - done, inversion, pattern, to + 3 * done);
}

}  // namespace

ImageHandle AdjustColors(ImageHandle source, const ColorAdjustment& adjustment) {
    const ImageLock from(source);
    if (!from.image || from.image->bitCount != 24) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;

    const int32_t width = from.image->width;
    const bool listed = adjustment.pattern >= 0 && adjustment.pattern < kPatternCount;
    const uint8_t* pattern = adjustment.rearrange ? kPatterns[listed ? adjustment.pattern : 0] : kInPlace;
    // The middle positions change no colour at all.
    const bool shifted = adjustment.shift && (adjustment.hue != 180 || adjustment.saturation != 100 ||
                                              adjustment.brightness != 100);
    const HsbShift shift = MakeHsbShift(adjustment.hue, adjustment.saturation, adjustment.brightness);
    for (int32_t r = 0; r < from.image->height; ++r) {
        const uint8_t* in = StoredRow(from.image, r);
        uint8_t* row = StoredRow(to.image, r);
        if (adjustment.invert || adjustment.rearrange)
            ArrangeRow(in, width, adjustment.invert, pattern, row);
        else
            std::memcpy(row, in, 3 * static_cast<size_t>(width));
        if (shifted) ShiftHsbRow(row, width, shift);
    }
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    ColorAdjustment adjustment = {};
    adjustment.hue = input.values[0];
    adjustment.saturation = input.values[1];
    adjustment.brightness = input.values[2];
    adjustment.shift = input.values[3] != 0;
    adjustment.pattern = input.values[4] >= kPatternCount - 1 ? kPatternCount - 1 : input.values[4];
    adjustment.rearrange = input.values[5] != 0;
    adjustment.invert = input.values[6] != 0;
    return AdjustColors(source, adjustment);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_HSB_HUE, &settings.style010Hue, HSB_HUE_RANGE},
    {ControlKind::Slider, IDC_HSB_SATURATION, &settings.style010Sat, HSB_SATURATION_RANGE},
    {ControlKind::Slider, IDC_HSB_BRIGHTNESS, &settings.style010Bri, HSB_BRIGHTNESS_RANGE},
    {ControlKind::CheckBox, IDC_HSB_ENABLE, &settings.style010HSBEnable, HSB_ENABLE_TEXT},
    {ControlKind::List, IDC_HSB_CHANNELS, &settings.style010ChannelsOption, HSB_CHANNELS_ITEMS},
    {ControlKind::CheckBox, IDC_HSB_CHANNELS_ENABLE, &settings.style010ChannelsEnable,
     HSB_CHANNELS_ENABLE_TEXT},
    {ControlKind::SliderBox, IDC_HSB_INVERT, &settings.style010InvertColors, HSB_INVERT_TEXT},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_HSB_HUE),
                                    SLIDER_IDS(IDC_HSB_SATURATION),
                                    SLIDER_IDS(IDC_HSB_BRIGHTNESS),
                                    IDC_HSB_ENABLE,
                                    IDC_HSB_CHANNELS,
                                    IDC_HSB_CHANNELS_CAPTION,
                                    IDC_HSB_CHANNELS_ENABLE,
                                    IDC_HSB_INVERT,
                                    0};

}  // namespace

const EffectRecord kHsbChannelsEffect = {
    "HSB and Channels", IDD_PANEL_HSB, kControlIds, kControls, 7, Kernel, nullptr};

}  // namespace kfx
