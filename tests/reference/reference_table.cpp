// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <cstring>

namespace kfx::test {
namespace {

struct Row {
    const char* effect;
    EffectKernel reference;
};

// In the order of the effect table.
constexpr Row kReferences[] = {
    {"Bump", ReferenceBump},
    {"Emboss", ReferenceEmboss},
    {"Explode", ReferenceExplode},
    {"Gaussian Blur", ReferenceGaussianBlur},
    {"Glass Block", ReferenceGlassBlock},
    {"HSB and Channels", ReferenceHsbChannels},
    {"Implode", ReferenceImplode},
    {"Lens Flare", ReferenceLensFlare},
    {"Motion Blur", ReferenceMotionBlur},
    {"Neon", ReferenceNeon},
    {"Normalize", ReferenceNormalize},
    {"Obscure", ReferenceObscure},
    {"Oil Painting", ReferenceOilPainting},
    {"Radial Blur", ReferenceRadialBlur},
    {"Raster", ReferenceRaster},
    {"Ripple", ReferenceRipple},
    {"Solarize", ReferenceSolarize},
    {"Swirl", ReferenceSwirl},
    {"Water Drops", ReferenceWaterDrops},
    {"Zoom Blur", ReferenceZoomBlur},
};

}  // namespace

EffectKernel ReferenceOf(const char* effect) {
    for (const Row& row : kReferences)
        if (std::strcmp(row.effect, effect) == 0) return row.reference;
    return nullptr;
}

}  // namespace kfx::test
