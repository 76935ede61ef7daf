// SPDX-License-Identifier: MIT
#include "tests/reference/scaler_reference.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "framework/math/elementary.h"

namespace kfx::test {
namespace {

constexpr double kPi = 3.14159265358979323846;

double Mitchell(double x) {
    x = std::fabs(x);
    if (x < 1) return 7.0 / 6 * x * x * x - 2 * x * x + 8.0 / 9;
    if (x < 2) return -7.0 / 18 * x * x * x + 2 * x * x - 10.0 / 3 * x + 16.0 / 9;
    return 0;
}

double Sinc(double t) { return t == 0 ? 1 : Sin(kPi * t) / (kPi * t); }

double Lanczos(double x) { return std::fabs(x) < 3 ? Sinc(x) * Sinc(x / 3) : 0; }

struct Weight {
    int32_t position;
    double weight;
};

// What lies under the filter around position `x` of the result, inside the picture, adding up to 1.
std::vector<Weight> Gather(int32_t x, int32_t side, double scale, bool growing, double blur) {
    const double spread = std::max(1 / scale, 1.0) * blur;
    const double support = spread * (growing ? 2.0 : 3.0);
    const double center = (x + 0.5) / scale;
    std::vector<Weight> weights;
    double sum = 0;
    const int32_t first = std::min(static_cast<int32_t>(std::max(center - support + 0.5, 0.0)), side - 1);
    const int32_t end = static_cast<int32_t>(std::min(center + support + 0.5, static_cast<double>(side)));
    for (int32_t position = first; position < end; ++position) {
        const double distance = (position - center + 0.5) / spread;
        weights.push_back({position, growing ? Mitchell(distance) : Lanczos(distance)});
        sum += weights.back().weight;
    }
    for (Weight& weight : weights) weight.weight /= sum;
    return weights;
}

uint32_t Heaviest(const std::vector<Weight>& weights) {
    size_t best = 0;
    for (size_t i = 1; i < weights.size(); ++i)
        if (weights[i].weight > weights[best].weight) best = i;
    return static_cast<uint32_t>(weights[best].position);
}

// One pixel: channel by channel the weighted sum in single precision, in the order of the positions.
uint32_t Blend(const std::vector<Weight>& weights, const std::vector<uint32_t>& colors) {
    uint32_t result = 0;
    for (uint32_t shift = 0; shift < 32; shift += 8) {
        float sum = 0;
        for (size_t i = 0; i < weights.size(); ++i) {
            const float product =
                static_cast<float>(weights[i].weight) * static_cast<float>(colors[i] >> shift & 255);
            sum += product;
        }
        sum += 0.5f;
        const auto byte = static_cast<uint32_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
        result |= byte << shift;
    }
    return result;
}

// Rows count from the bottom, as they are stored.
uint32_t StoredPixel(const WorkingImage* image, int32_t x, int32_t r) {
    return GetDibPixel(image, x, image->height - 1 - r);
}

ImageHandle Pass(ImageHandle source, bool across, int32_t side, double scale, bool growing, double blur) {
    const ImageLock from(source);
    const int32_t width = across ? side : from.image->width;
    const int32_t height = across ? from.image->height : side;
    uint8_t palette[kPaletteBytes];
    ReadColorTable(from.image, palette);
    const ImageHandle result = CreateDib(width, height, palette, from.image->bitCount);
    const ImageLock to(result);
    for (int32_t r = 0; r < height; ++r) {
        for (int32_t x = 0; x < width; ++x) {
            const std::vector<Weight> weights = across ? Gather(x, from.image->width, scale, growing, blur)
                                                       : Gather(r, from.image->height, scale, growing, blur);
            std::vector<uint32_t> colors;
            colors.reserve(weights.size());
            for (const Weight& weight : weights)
                colors.push_back(across ? StoredPixel(from.image, weight.position, r)
                                        : StoredPixel(from.image, x, weight.position));
            uint32_t value;
            if (from.image->bitCount <= 8)
                value = colors[Heaviest(weights) - static_cast<uint32_t>(weights[0].position)];
            else
                value = Blend(weights, colors);
            SetDibPixel(to.image, x, height - 1 - r, value);
        }
    }
    return result;
}

}  // namespace

ImageHandle ReferenceResample(ImageHandle source, int32_t width, int32_t height, double blur) {
    int64_t w, h;
    {
        const ImageLock from(source);
        w = from.image->width;
        h = from.image->height;
        if (w == width && h == height && blur == 1.0) return DuplicateImage(from.image);
    }
    const double sx = std::max(static_cast<double>(width) / static_cast<double>(w), 0.0001);
    const double sy = std::max(static_cast<double>(height) / static_cast<double>(h), 0.0001);
    const bool growing = sx * sy > 1.0;
    const bool verticalFirst = (h + height) * width <= (w + width) * height;
    ImageHandle between;
    ImageHandle result;
    if (verticalFirst) {
        between = Pass(source, false, height, sy, growing, blur);
        result = Pass(between, true, width, sx, growing, blur);
    } else {
        between = Pass(source, true, width, sx, growing, blur);
        result = Pass(between, false, height, sy, growing, blur);
    }
    FreeMemory(between);
    return result;
}

}  // namespace kfx::test
