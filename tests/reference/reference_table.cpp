// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <cstring>

#include "tests/reference/bump_reference.h"
#include "tests/reference/emboss_reference.h"
#include "tests/reference/gaussian_blur_reference.h"
#include "tests/reference/glass_block_reference.h"
#include "tests/reference/motion_blur_reference.h"
#include "tests/reference/neon_reference.h"
#include "tests/reference/obscure_reference.h"
#include "tests/reference/oil_painting_reference.h"
#include "tests/reference/radial_blur_reference.h"
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
    {"Gaussian Blur", ReferenceGaussianBlur},
    {"Glass Block", ReferenceGlassBlock},
    {"Motion Blur", ReferenceMotionBlur},
    {"Neon", ReferenceNeon},
    {"Obscure", ReferenceObscure},
    {"Oil Painting", ReferenceOilPainting},
    {"Radial Blur", ReferenceRadialBlur},
    {"Zoom Blur", ReferenceZoomBlur},
};

}  // namespace

EffectKernel ReferenceOf(const char* effect) {
    for (const Row& row : kReferences)
        if (std::strcmp(row.effect, effect) == 0) return row.reference;
    return nullptr;
}

}  // namespace kfx::test
