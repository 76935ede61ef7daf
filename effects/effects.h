// SPDX-License-Identifier: MIT
// The effects, each in a file of its own. effect_table.h has them as a table.
#pragma once

#include "framework/effect.h"

// The list of all effects, in the order in which the window shows them. Configuration files store a row's
// number, so a new effect is added at the end. row(Swirl) stands for the record kSwirl.
// clang-format off
#define KFX_FOR_EACH_EFFECT(row) \
    row(Bump) \
    row(Emboss) \
    row(Explode) \
    row(GaussianBlur) \
    row(GlassBlock) \
    row(HsbChannels) \
    row(Implode) \
    row(LensFlare) \
    row(MotionBlur) \
    row(Neon) \
    row(Normalize) \
    row(Obscure) \
    row(OilPainting) \
    row(RadialBlur) \
    row(Raster) \
    row(Ripple) \
    row(Solarize) \
    row(Swirl) \
    row(WaterDrops) \
    row(ZoomBlur)
// clang-format on

namespace kfx {

#define KFX_DECLARE_EFFECT(name) extern const Effect k##name;
KFX_FOR_EACH_EFFECT(KFX_DECLARE_EFFECT)
#undef KFX_DECLARE_EFFECT

}  // namespace kfx
