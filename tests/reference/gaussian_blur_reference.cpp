// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

using Line = std::vector<uint8_t>;

std::vector<float> BuildWeights(int32_t n, float sigma) {
    if (n < 1) n = 3;
    const int32_t m = 3 * n / 2;
    std::vector<float> weights(static_cast<size_t>(n));
    int32_t k = 0;
    for (int32_t t = -m; t <= m; ++t, ++k) {
        if (k / 3 >= n) break;
        float& weight = weights[static_cast<size_t>(k / 3)];
        weight = static_cast<float>(weight + Exp(-(t * t) / (sigma * 18.0 * sigma)));
    }
    float sum = 0;
    for (const float weight : weights) sum += weight;
    for (float& weight : weights) weight /= sum;
    return weights;
}

// One channel of one line.
Line Blur(const std::vector<float>& w, const Line& src) {
    const auto n = static_cast<int32_t>(w.size()), L = static_cast<int32_t>(src.size());
    Line out = src;
    if (n > L) return out;
    const int32_t h = n / 2;
    for (int32_t i = 0; i < L; ++i) {
        float sum = 0, weightSum = 0;
        const auto add = [&](int32_t position, int32_t tap) {
            sum += static_cast<float>(src[static_cast<size_t>(position)]) * w[static_cast<size_t>(tap)];
            weightSum += w[static_cast<size_t>(tap)];
        };
        double value;
        if (i < h) {
            for (int32_t j = 0; h - i + j < n; ++j) add(j, h - i + j);
            value = (sum + 0.5) / weightSum;
        } else if (i < L - h) {
            for (int32_t j = 0; j < n; ++j) add(i - h + j, j);
            value = sum + 0.5;
        } else {
            for (int32_t j = 0; i - h + j < L; ++j) add(i - h + j, j);
            value = (sum + 0.5) / weightSum;
        }
        out[static_cast<size_t>(i)] = static_cast<uint8_t>(static_cast<int32_t>(value));
    }
    return out;
}

// Runs `change` over one byte of the pixel values of a row or column, `shift` bits up.
template <typename At, typename Change>
void ChangeLine(WorkingImage* image, int32_t length, int shift, const At& at, const Change& change) {
    Line line(static_cast<size_t>(length));
    for (int32_t i = 0; i < length; ++i)
        line[static_cast<size_t>(i)] =
            static_cast<uint8_t>(GetDibPixel(image, at(i).first, at(i).second) >> shift);
    line = change(line);
    for (int32_t i = 0; i < length; ++i) {
        const uint32_t others = GetDibPixel(image, at(i).first, at(i).second) & ~(255u << shift);
        SetDibPixel(image, at(i).first, at(i).second,
                    others | static_cast<uint32_t>(line[static_cast<size_t>(i)]) << shift);
    }
}

template <typename Change>
void ChangeRowsThenColumns(WorkingImage* image, const Change& change) {
    const int32_t width = image->width, height = image->height;
    const int channels = image->bitCount <= 8 ? 1 : 3;
    for (int channel = 0; channel < channels; ++channel) {
        for (int32_t y = 0; y < height; ++y)
            ChangeLine(
                image, width, 8 * channel, [&](int32_t i) { return std::make_pair(i, y); }, change);
        for (int32_t x = 0; x < width; ++x)
            ChangeLine(
                image, height, 8 * channel, [&](int32_t i) { return std::make_pair(x, i); }, change);
    }
}

Line Average(int64_t r, const Line& src) {
    const auto L = static_cast<int64_t>(src.size());
    Line out = src;
    for (int64_t i = 0; i < L; ++i) {
        int64_t sum = 0;
        // Far beyond the ends every position is the same edge sample.
        const int64_t near = std::min(r, L);
        for (int64_t j = -near; j <= near; ++j)
            sum += src[static_cast<size_t>(std::clamp<int64_t>(i + j, 0, L - 1))];
        sum += (r - near) * (src.front() + src.back());
        out[static_cast<size_t>(i)] = static_cast<uint8_t>(sum / (2 * r + 1));
    }
    return out;
}

}  // namespace

ImageHandle ReferenceGaussianBlur(ImageHandle source, const KernelInput& input) {
    const int32_t radius = input.values[0], depth = input.values[1];
    const ImageLock from(source);
    if (radius == 0) return nullptr;
    const auto wanted = static_cast<int32_t>(std::ceil(depth / 10.0) * 2 + 1);
    const int32_t taps = wanted < 1 ? 3 : wanted;
    const bool box = taps > from.image->width;
    if (box && (depth / 6 < 1 || from.image->bitCount < 24)) return nullptr;
    MemoryOwner owner(DuplicateImage(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    if (box) {
        ChangeRowsThenColumns(to.image, [depth](const Line& line) { return Average(depth / 6, line); });
    } else {
        const int32_t n = std::min({from.image->width, from.image->height, wanted});
        const std::vector<float> weights = BuildWeights(n, static_cast<float>(radius / 10.0));
        ChangeRowsThenColumns(to.image, [&](const Line& line) { return Blur(weights, line); });
    }
    return owner.Release();
}

}  // namespace kfx::test
