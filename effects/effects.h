// SPDX-License-Identifier: MIT
// The twenty effects, each in a file of its own. effect_table.h has them in the order of the effect list.
#pragma once

#include "framework/effect.h"

namespace kfx {

extern const Effect kBump;
extern const Effect kEmboss;
extern const Effect kExplode;
extern const Effect kGaussianBlur;
extern const Effect kGlassBlock;
extern const Effect kHsbChannels;
extern const Effect kImplode;
extern const Effect kLensFlare;
extern const Effect kMotionBlur;
extern const Effect kNeon;
extern const Effect kNormalize;
extern const Effect kObscure;
extern const Effect kOilPainting;
extern const Effect kRadialBlur;
extern const Effect kRaster;
extern const Effect kRipple;
extern const Effect kSolarize;
extern const Effect kSwirl;
extern const Effect kWaterDrops;
extern const Effect kZoomBlur;

}  // namespace kfx
