// SPDX-License-Identifier: MIT
// Motion Blur: every pixel is a weighted sum of pixels stepped away from it along a line, with weights that
// fall off like one side of a bell. Sums are truncated, not rounded. The panel's captions mislead: "Depth" is
// the bell's spread, "Radius" half the number of taps.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <cmath>

#include "effects/effects.h"
#include "framework/math/elementary.h"
#include "framework/settings.h"
#include "kernels/bell_weights.h"
#include "kernels/smear.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kLongestRadius = 16383;  // longer than any picture is wide; keeps i * dx in range
constexpr int32_t kMostAutomaticTaps = 257;

// The greatest number of taps whose last weight, times 255, is at least 1. It is at least 3 and found in
// steps of two. Weights fall and sum to 1, so the search ends below kMostAutomaticTaps.
int32_t AutomaticTaps(double sigma, double* weights) {
    int32_t count = 3;
    BuildMotionWeights(count, sigma, weights);
    if (static_cast<int32_t>(255 * weights[count - 1]) <= 0) return count;
    while (static_cast<int32_t>(255 * weights[count - 1]) > 0) {
        count += 2;
        BuildMotionWeights(count, sigma, weights);
    }
    count -= 2;
    BuildMotionWeights(count, sigma, weights);
    return count;
}

void PlaceTaps(int32_t count, int32_t angle, const double* weights, Tap* taps) {
    const double radians = angle * 3.141592653589793 / 180;
    const auto endX = static_cast<int32_t>(Sin(radians) * count);
    const auto endY = static_cast<int32_t>(Cos(radians) * count);
    const double length = std::sqrt(static_cast<double>(int64_t{endX} * endX + int64_t{endY} * endY));
    for (int32_t i = 0; i < count; ++i)
        taps[i] = {weights[i], static_cast<int32_t>(i * endX / length),
                   static_cast<int32_t>(i * endY / length)};
}

// The smear has 2 * radius + 1 taps, or AutomaticTaps() when the radius is not positive. With a depth of 0,
// or a smear longer than any picture, the picture stays as it is.
ImageHandle ApplyMotionBlur(ImageHandle source, const KernelInput& input) {
    const int32_t depth = input.values[0];
    const int32_t radius = input.values[1];
    const int32_t angle = input.values[2];  // degrees
    const ImageLock from(source);
    if (!from || from->bitCount != 24 || depth == 0 || radius > kLongestRadius) return nullptr;
    const size_t capacity = radius > 0 ? 2 * static_cast<size_t>(radius) + 1 : kMostAutomaticTaps;
    NewImage to(CreateLike(from.image));
    const Scratch<double> weights(capacity);
    const Scratch<Tap> taps(capacity);
    if (!to || !weights || !taps) return nullptr;

    auto count = static_cast<int32_t>(capacity);
    if (radius > 0)
        BuildMotionWeights(count, depth, weights.address);
    else
        count = AutomaticTaps(depth, weights.address);
    PlaceTaps(count, angle, weights.address, taps.address);
    if (!SmearImage(from.image, to.image, taps.address, count, input.background)) return nullptr;
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_MOTION_BLUR_DEPTH, &settings.style014Depth, MOTION_BLUR_DEPTH_RANGE,
           MOTION_BLUR_DEPTH_CAPTION),
    Slider(IDC_MOTION_BLUR_RADIUS, &settings.style014Radius, MOTION_BLUR_RADIUS_RANGE,
           MOTION_BLUR_RADIUS_CAPTION),
    Slider(IDC_MOTION_BLUR_ANGLE, &settings.style014Angle, MOTION_BLUR_ANGLE_RANGE,
           MOTION_BLUR_ANGLE_CAPTION),
});

}  // namespace

const Effect kMotionBlur = {
    .name = "Motion Blur", .panel = IDD_PANEL_MOTION_BLUR, .controls = kControls, .apply = ApplyMotionBlur};

}  // namespace kfx
