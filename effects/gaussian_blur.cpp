// SPDX-License-Identifier: MIT
// Gaussian Blur: a horizontal pass over every row, then a vertical pass over every column, both truncating to
// bytes. At the ends of a line the weights are cut off and renormalised, where the half that rounds is added
// before the division by their sum: borders come out a trace lighter, on purpose.
#include "effects/gaussian_blur.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "kernels/box_blur.h"
#include "kernels/separable_blur.h"
#include "resources/panel_controls.h"

namespace kfx {

void BuildBlurWeights(int32_t n, float sigma, float* weights) {
    const int32_t reach = 3 * n / 2;
    for (int32_t i = 0; i < n; ++i) weights[i] = 0;
    // With an even n there is one sample more than three for each weight; it is dropped.
    constexpr int32_t kSamples = 48;
    double samples[kSamples];
    for (int32_t first = 0; first < 3 * n; first += kSamples) {
        const int32_t end = std::min(first + kSamples, 3 * n);
        for (int32_t k = first; k < end; ++k) {
            const double t = k - reach;
            samples[k - first] = -(t * t) / (sigma * 18.0 * sigma);
        }
        ExpRow(samples, end - first, samples);
        for (int32_t k = first; k < end; ++k)
            weights[k / 3] = static_cast<float>(weights[k / 3] + samples[k - first]);
    }
    float sum = 0;
    for (int32_t i = 0; i < n; ++i) sum += weights[i];
    for (int32_t i = 0; i < n; ++i) weights[i] /= sum;
}

void BlurLine(const float* weights, int32_t n, const uint8_t* source, uint8_t* destination, int32_t length,
              int32_t channels) {
    if (n > length) return;
    const int32_t half = n / 2;
    for (int32_t i = 0; i < length; ++i) {
        const int32_t first = i - half;
        const int32_t begin = std::max(0, -first);
        const int32_t end = std::min(n, length - first);
        const bool cut = i < half || i >= length - half;
        for (int32_t channel = 0; channel < channels; ++channel) {
            float sum = 0, weightSum = 0;
            for (int32_t j = begin; j < end; ++j) {
                sum += weights[j] * source[static_cast<ptrdiff_t>(first + j) * channels + channel];
                weightSum += weights[j];
            }
            const double rounded = sum + 0.5;
            destination[static_cast<ptrdiff_t>(i) * channels + channel] =
                static_cast<uint8_t>(static_cast<int32_t>(cut ? rounded / weightSum : rounded));
        }
    }
}

namespace {

int32_t TapsOf(int32_t depth) { return static_cast<int32_t>(std::ceil(depth / 10.0) * 2 + 1); }

struct Lines {
    const float* weights;
    int32_t count;  // of weights
    uint8_t* line;
    uint8_t* blurred;
};

// Blurs the row or column of `length` pixels that begins at (x, y), of any depth: colours channel by channel,
// a fourth byte staying as it is; colour-table indices as numbers.
void BlurPixels(WorkingImage* image, int32_t x, int32_t y, bool isRow, int32_t length, const Lines& lines) {
    const int32_t channels = image->bitCount <= 8 ? 1 : 3;
    for (int32_t i = 0; i < length; ++i) {
        const uint32_t value = GetDibPixel(image, isRow ? i : x, isRow ? y : i);
        for (int32_t c = 0; c < channels; ++c)
            lines.line[static_cast<ptrdiff_t>(i) * channels + c] = static_cast<uint8_t>(value >> 8 * c);
    }
    const size_t bytes = static_cast<size_t>(length) * static_cast<size_t>(channels);
    std::memcpy(lines.blurred, lines.line, bytes);
    BlurLine(lines.weights, lines.count, lines.line, lines.blurred, length, channels);
    for (int32_t i = 0; i < length; ++i) {
        const int32_t column = isRow ? i : x;
        const int32_t row = isRow ? y : i;
        uint32_t value = GetDibPixel(image, column, row) & 0xFF000000;
        for (int32_t c = 0; c < channels; ++c)
            value |= uint32_t{lines.blurred[static_cast<ptrdiff_t>(i) * channels + c]} << 8 * c;
        SetDibPixel(image, column, row, value);
    }
}

bool BlurAnyDepth(const WorkingImage* from, WorkingImage* to, const float* weights, int32_t n) {
    const size_t longest = 3 * static_cast<size_t>(std::max(from->width, from->height));
    const Scratch<uint8_t> line(longest);
    const Scratch<uint8_t> blurred(longest);
    if (!line.address || !blurred.address) return false;
    std::memcpy(PixelsOf(to), PixelsOf(from), StrideOf(from) * static_cast<size_t>(from->height));
    const Lines lines = {weights, n, line.address, blurred.address};
    for (int32_t y = 0; y < to->height; ++y) BlurPixels(to, 0, y, true, to->width, lines);
    for (int32_t x = 0; x < to->width; ++x) BlurPixels(to, x, 0, false, to->height, lines);
    return true;
}

ImageHandle SeparableBlur(ImageHandle source, int32_t depth, int32_t radius) {
    const ImageLock from(source);
    if (!from.image) return nullptr;
    const int32_t lesserSide = std::min(from.image->width, from.image->height);
    int32_t n = std::min(lesserSide, TapsOf(depth));
    if (n < 1) n = 3;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    const Scratch<float> weights(static_cast<size_t>(n));
    if (!to.image || !weights.address) return nullptr;
    BuildBlurWeights(n, static_cast<float>(radius / 10.0), weights.address);
    // More weights than a side has pixels, which the least number of three allows, leave that side's lines
    // untouched.
    const bool done = from.image->bitCount == 24 && n <= lesserSide
                          ? BlurRowsAndColumns(from.image, to.image, weights.address, n)
                          : BlurAnyDepth(from.image, to.image, weights.address, n);
    return done ? owner.Release() : nullptr;
}

}  // namespace

ImageHandle ApplyGaussianBlur(ImageHandle source, int32_t radius, int32_t depth) {
    int32_t taps = TapsOf(depth);
    if (taps < 1) taps = 3;
    int32_t width;
    {
        const ImageLock from(source);
        if (!from.image || radius == 0) return nullptr;
        width = from.image->width;
    }
    return taps > width ? BoxBlur(source, depth) : SeparableBlur(source, depth, radius);
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyGaussianBlur(source, input.values[0], input.values[1]);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_GAUSSIAN_BLUR_RADIUS, &settings.style004Radius, GAUSSIAN_BLUR_RADIUS_RANGE},
    {ControlKind::Slider, IDC_GAUSSIAN_BLUR_DEPTH, &settings.style004Depth, GAUSSIAN_BLUR_DEPTH_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_GAUSSIAN_BLUR_RADIUS), SLIDER_IDS(IDC_GAUSSIAN_BLUR_DEPTH),
                                    0};

}  // namespace

const EffectRecord kGaussianBlurEffect = {
    "Gaussian Blur", IDD_PANEL_GAUSSIAN_BLUR, kControlIds, kControls, 2, Kernel, nullptr};

}  // namespace kfx
