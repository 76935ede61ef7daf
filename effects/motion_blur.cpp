// SPDX-License-Identifier: MIT
// Motion Blur: every pixel is a weighted sum of pixels stepped away from it along a line, with weights that
// fall off like one side of a bell. Sums are truncated, not rounded. The panel's captions mislead: "Depth" is
// the bell's spread, "Radius" half the number of taps.
#include "effects/motion_blur.h"

#include <algorithm>
#include <cmath>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "kernels/smear.h"
#include "resources/panel_controls.h"

namespace kfx {

void BuildMotionWeights(int32_t count, double sigma, double* weights) {
    for (int32_t i = 0; i < count; ++i) weights[i] = 0;
    constexpr int32_t kSamples = 48;
    double samples[kSamples];
    for (int32_t first = 0; first < 3 * count; first += kSamples) {
        const int32_t end = std::min(first + kSamples, 3 * count);
        for (int32_t j = first; j < end; ++j)
            samples[j - first] = -(static_cast<double>(j) * j) / (18.0 * (sigma * sigma));
        ExpRow(samples, end - first, samples);
        for (int32_t j = first; j < end; ++j) weights[j / 3] += samples[j - first];
    }
    double sum = 0;
    for (int32_t i = 0; i < count; ++i) sum += weights[i];
    for (int32_t i = 0; i < count; ++i) weights[i] /= sum;
}

namespace {

constexpr int32_t kLongestRadius = 16383;  // longer than any picture is wide; keeps i * dx in range
constexpr int32_t kMostAutomaticTaps = 257;

// The number of taps whose last weight still counts: grown by two until it would round to 0 of 255. Weights
// fall and sum to 1, so that ends below kMostAutomaticTaps.
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

}  // namespace

ImageHandle ApplyMotionBlur(ImageHandle source, int32_t depth, int32_t radius, int32_t angle,
                            uint32_t background) {
    const ImageLock from(source);
    if (!from.image || from.image->bitCount != 24 || depth == 0 || radius > kLongestRadius) return nullptr;
    const size_t capacity = radius > 0 ? 2 * static_cast<size_t>(radius) + 1 : kMostAutomaticTaps;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    const Scratch<double> weights(capacity);
    const Scratch<Tap> taps(capacity);
    if (!to.image || !weights.address || !taps.address) return nullptr;

    auto count = static_cast<int32_t>(capacity);
    if (radius > 0)
        BuildMotionWeights(count, depth, weights.address);
    else
        count = AutomaticTaps(depth, weights.address);
    PlaceTaps(count, angle, weights.address, taps.address);
    if (!SmearImage(from.image, to.image, taps.address, count, background)) return nullptr;
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyMotionBlur(source, input.values[0], input.values[1], input.values[2], input.background);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_MOTION_BLUR_DEPTH, &settings.style014Depth, MOTION_BLUR_DEPTH_RANGE},
    {ControlKind::Slider, IDC_MOTION_BLUR_RADIUS, &settings.style014Radius, MOTION_BLUR_RADIUS_RANGE},
    {ControlKind::Slider, IDC_MOTION_BLUR_ANGLE, &settings.style014Angle, MOTION_BLUR_ANGLE_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_MOTION_BLUR_DEPTH), SLIDER_IDS(IDC_MOTION_BLUR_RADIUS),
                                    SLIDER_IDS(IDC_MOTION_BLUR_ANGLE), 0};

}  // namespace

const EffectRecord kMotionBlurEffect = {
    "Motion Blur", IDD_PANEL_MOTION_BLUR, kControlIds, kControls, 3, Kernel, nullptr};

}  // namespace kfx
