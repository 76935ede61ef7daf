// SPDX-License-Identifier: MIT
// For every effect the slow, obvious kernel: written from the effect's rules through the pixel accessors, in
// the order in which the rules stand. The product's kernels must give the same bytes, and benchmarks time
// both.
#pragma once

#include "framework/effect.h"

namespace kfx::test {

// Bump, pixel by pixel.
ImageHandle ReferenceBump(ImageHandle source, const KernelInput& input);

// Emboss, pixel by pixel; values: radius, depth.
ImageHandle ReferenceEmboss(ImageHandle source, const KernelInput& input);

// Explode, pixel by pixel.
ImageHandle ReferenceExplode(ImageHandle source, const KernelInput& input);

// Gaussian Blur, line by line; values: radius, depth.
ImageHandle ReferenceGaussianBlur(ImageHandle source, const KernelInput& input);

// Glass Block, pixel by pixel; values: size.
ImageHandle ReferenceGlassBlock(ImageHandle source, const KernelInput& input);

// HSB and Channels, pixel by pixel, a new picture for each stage.
ImageHandle ReferenceHsbChannels(ImageHandle source, const KernelInput& input);

// Implode, pixel by pixel.
ImageHandle ReferenceImplode(ImageHandle source, const KernelInput& input);

// Lens Flare, every glow and element at every pixel.
ImageHandle ReferenceLensFlare(ImageHandle source, const KernelInput& input);

// Motion Blur, tap by tap; values: depth, radius, angle.
ImageHandle ReferenceMotionBlur(ImageHandle source, const KernelInput& input);

// Neon, pixel by pixel.
ImageHandle ReferenceNeon(ImageHandle source, const KernelInput& input);

// Normalize of one frame by itself, pixel by pixel.
ImageHandle ReferenceNormalize(ImageHandle source, const KernelInput& input);

// Obscure, tile by tile; values: level.
ImageHandle ReferenceObscure(ImageHandle source, const KernelInput& input);

// Oil Painting, vote by vote; values: radius.
ImageHandle ReferenceOilPainting(ImageHandle source, const KernelInput& input);

// Radial Blur, sample by sample; values: angle.
ImageHandle ReferenceRadialBlur(ImageHandle source, const KernelInput& input);

// Raster, pixel by pixel.
ImageHandle ReferenceRaster(ImageHandle source, const KernelInput& input);

// Ripple, pixel by pixel.
ImageHandle ReferenceRipple(ImageHandle source, const KernelInput& input);

// Solarize, pixel by pixel.
ImageHandle ReferenceSolarize(ImageHandle source, const KernelInput& input);

// Swirl, pixel by pixel.
ImageHandle ReferenceSwirl(ImageHandle source, const KernelInput& input);

// Water Drops, pixel by pixel, two numbers from the C runtime's generator for each.
ImageHandle ReferenceWaterDrops(ImageHandle source, const KernelInput& input);

// Zoom Blur, sample by sample; values: displacement, cycles.
ImageHandle ReferenceZoomBlur(ImageHandle source, const KernelInput& input);

// The reference of the effect with this name; null when it has none.
EffectKernel ReferenceOf(const char* effect);

}  // namespace kfx::test
