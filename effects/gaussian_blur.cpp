// SPDX-License-Identifier: MIT
// Gaussian Blur: a horizontal pass over every row, then a vertical pass over every column, both truncating to
// bytes. Near the ends of a line the weights outside it are left out, and the sum is divided by the sum of
// the other weights. The 0.5 that rounds the result is added before this division, so borders come out
// slightly lighter.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>
#include <cmath>

#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/bell_weights.h"
#include "kernels/box_blur.h"
#include "kernels/line_blur.h"
#include "kernels/separable_blur.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

int32_t TapsOf(int32_t depth) { return static_cast<int32_t>(std::ceil(depth / 10.0) * 2 + 1); }

ImageHandle SeparableBlur(ImageHandle source, int32_t depth, int32_t radius) {
    const ImageLock from(source);
    if (!from) return nullptr;
    const int32_t lesserSide = std::min(from->width, from->height);
    int32_t n = std::min(lesserSide, TapsOf(depth));
    if (n < 1) n = 3;
    NewImage to(CreateLike(from.image));
    const Scratch<float> weights(static_cast<size_t>(n));
    if (!to || !weights) return nullptr;
    BuildBlurWeights(n, static_cast<float>(radius / 10.0), weights.address);
    // A depth that asks for no taps gives three weights, which may be more than a side has pixels. Lines of
    // that length stay untouched.
    const bool done = from->bitCount == 24 && n <= lesserSide
                          ? BlurRowsAndColumns(from.image, to.image, weights.address, n)
                          : BlurAnyDepth(from.image, to.image, weights.address, n);
    return done ? to.Release() : nullptr;
}

// The spread is radius / 10 pixels. Pictures narrower than the taps get a box blur of depth / 6 pixels to
// each side instead. The picture stays as it is when the radius is 0, when the box is too small to blur, and
// when it is narrow and has 8 bits or fewer.
ImageHandle ApplyGaussianBlur(ImageHandle source, const KernelInput& input) {
    const int32_t radius = input.values[0];
    const int32_t depth = input.values[1];
    int32_t taps = TapsOf(depth);
    if (taps < 1) taps = 3;
    int32_t width;
    {
        const ImageLock from(source);
        if (!from || radius == 0) return nullptr;
        width = from->width;
    }
    return taps > width ? BoxBlur(source, depth) : SeparableBlur(source, depth, radius);
}

constexpr auto kControls = MakeControls({
    Slider(IDC_GAUSSIAN_BLUR_RADIUS, &settings.style004Radius, GAUSSIAN_BLUR_RADIUS_RANGE,
           GAUSSIAN_BLUR_RADIUS_CAPTION),
    Slider(IDC_GAUSSIAN_BLUR_DEPTH, &settings.style004Depth, GAUSSIAN_BLUR_DEPTH_RANGE,
           GAUSSIAN_BLUR_DEPTH_CAPTION),
});

}  // namespace

const Effect kGaussianBlur = {.name = "Gaussian Blur",
                              .panel = IDD_PANEL_GAUSSIAN_BLUR,
                              .controls = kControls,
                              .apply = ApplyGaussianBlur};

}  // namespace kfx
