// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// How colours are to be adjusted: three stages, each optional, in this order.
struct ColorAdjustment {
    bool invert;
    bool rearrange;
    int32_t pattern;  // of the channel list's seven; any other number counts as 0
    bool shift;
    int32_t hue;         // 180: no change, one degree a step
    int32_t saturation;  // 100: no change, 200: doubled
    int32_t brightness;  // likewise
};

// A new image with adjusted colours, or null when the picture is not 24 bits deep or memory ran out.
ImageHandle AdjustColors(ImageHandle source, const ColorAdjustment& adjustment);

extern const EffectRecord kHsbChannelsEffect;

}  // namespace kfx
