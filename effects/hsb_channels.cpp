// SPDX-License-Identifier: MIT
// HSB and Channels: inverts the channels, rearranges them by one of seven patterns, and shifts hue and scales
// saturation and brightness; each stage can be switched off, and they run in this order. A shifted hue is not
// wrapped back into the circle: beyond either end it takes the last sector's colours. The "Invert colors" box
// is bound like a slider.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>
#include <cstring>

#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/channel_order.h"
#include "kernels/hsb_shift.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// For each pattern: which byte of the source pixel becomes blue, green and red. Byte 0 is blue, 1 green, 2
// red.
constexpr uint8_t kPatterns[][3] = {{2, 1, 0}, {0, 2, 1}, {1, 0, 2}, {2, 2, 1},
                                    {1, 1, 2}, {1, 0, 0}, {0, 1, 1}};
constexpr int32_t kPatternCount = 7;
constexpr uint8_t kInPlace[3] = {0, 1, 2};

// The middle positions change no colour at all.
constexpr int32_t kSameHue = 180;
constexpr int32_t kSameShare = 100;  // of saturation and brightness

// A number below the first pattern stands for the first one, a number beyond the last for the last one.
const uint8_t* PatternAt(int32_t row) { return kPatterns[std::clamp(row, 0, kPatternCount - 1)]; }

ImageHandle AdjustColors(ImageHandle source, const KernelInput& input) {
    const int32_t hue = input.values[0];
    const int32_t saturation = input.values[1];
    const int32_t brightness = input.values[2];
    const bool rearrange = input.values[5] != 0;
    const bool invert = input.values[6] != 0;
    const ImageLock from(source);
    if (!from || from->bitCount != 24) return nullptr;
    NewImage to(CreateLike(from.image));
    if (!to) return nullptr;

    const int32_t width = from->width;
    const uint8_t* pattern = rearrange ? PatternAt(input.values[4]) : kInPlace;
    const bool shifted =
        input.values[3] != 0 && (hue != kSameHue || saturation != kSameShare || brightness != kSameShare);
    const HsbShift shift = MakeHsbShift(hue, saturation, brightness);
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* in = StoredRow(from.image, r);
        uint8_t* row = StoredRow(to.image, r);
        if (invert || rearrange)
            ArrangeRow(in, width, invert, pattern, row);
        else
            std::memcpy(row, in, 3 * static_cast<size_t>(width));
        if (shifted) ShiftHsbRow(row, width, shift);
    }
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_HSB_HUE, &settings.style010Hue, HSB_HUE_RANGE, HSB_HUE_CAPTION),
    Slider(IDC_HSB_SATURATION, &settings.style010Sat, HSB_SATURATION_RANGE, HSB_SATURATION_CAPTION),
    Slider(IDC_HSB_BRIGHTNESS, &settings.style010Bri, HSB_BRIGHTNESS_RANGE, HSB_BRIGHTNESS_CAPTION),
    CheckBox(IDC_HSB_ENABLE, &settings.style010HSBEnable, HSB_ENABLE_TEXT),
    List(IDC_HSB_CHANNELS, &settings.style010ChannelsOption, HSB_CHANNELS_ITEMS, HSB_CHANNELS_CAPTION_TEXT),
    CheckBox(IDC_HSB_CHANNELS_ENABLE, &settings.style010ChannelsEnable, HSB_CHANNELS_ENABLE_TEXT),
    SliderBox(IDC_HSB_INVERT, &settings.style010InvertColors, HSB_INVERT_TEXT),
});

}  // namespace

const Effect kHsbChannels = {
    .name = "HSB and Channels", .panel = IDD_PANEL_HSB, .controls = kControls, .apply = AdjustColors};

}  // namespace kfx
