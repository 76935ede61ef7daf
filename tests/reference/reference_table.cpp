// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <cstring>

#include "tests/reference/bump_reference.h"
#include "tests/reference/emboss_reference.h"
#include "tests/reference/explode_reference.h"
#include "tests/reference/gaussian_blur_reference.h"
#include "tests/reference/glass_block_reference.h"
#include "tests/reference/hsb_channels_reference.h"
#include "tests/reference/implode_reference.h"
#include "tests/reference/lens_flare_reference.h"
#include "tests/reference/motion_blur_reference.h"
#include "tests/reference/neon_reference.h"
#include "tests/reference/normalize_reference.h"
#include "tests/reference/obscure_reference.h"
#include "tests/reference/oil_painting_reference.h"
#include "tests/reference/radial_blur_reference.h"
#include "tests/reference/raster_reference.h"
#include "tests/reference/ripple_reference.h"
#include "tests/reference/solarize_reference.h"
#include "tests/reference/swirl_reference.h"
#include "tests/reference/water_drops_reference.h"
#include "tests/reference/zoom_blur_reference.h"

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
