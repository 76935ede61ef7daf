// SPDX-License-Identifier: MIT
#include "commands/picture_quality.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "commands/alpha_pixels.h"

namespace kfx::commands {
namespace {

constexpr int kWindow = 8;
constexpr int kStep = 4;

double PsnrOf(const Pixels& a, const Pixels& b) {
    uint64_t sum = 0;
    for (size_t i = 0; i < a.size(); i += 4) {
        for (size_t c = 0; c < 3; ++c) {
            const int difference = a[i + c] - b[i + c];
            sum += static_cast<uint64_t>(difference * difference);
        }
    }
    if (sum == 0) return std::numeric_limits<double>::infinity();
    const size_t pixels = a.size() / 4;
    const double meanSquare = static_cast<double>(sum) / (3.0 * static_cast<double>(pixels));
    return 10 * std::log10(255.0 * 255.0 / meanSquare);
}

std::vector<uint8_t> LumaOf(const Pixels& pixels) {
    std::vector<uint8_t> luma(pixels.size() / 4);
    for (size_t i = 0; i < luma.size(); ++i) {
        const uint8_t* pixel = &pixels[4 * i];
        luma[i] = static_cast<uint8_t>((299 * pixel[0] + 587 * pixel[1] + 114 * pixel[2] + 500) / 1000);
    }
    return luma;
}

// What the formula of one window needs.
struct Sums {
    int64_t a = 0, b = 0, squares = 0, products = 0;
};

double WindowSsim(const Sums& sums, int64_t count) {
    constexpr double kC1 = 0.01 * 255 * 0.01 * 255;
    constexpr double kC2 = 0.03 * 255 * 0.03 * 255;
    const auto n = static_cast<double>(count);
    const double meanA = static_cast<double>(sums.a) / n, meanB = static_cast<double>(sums.b) / n;
    // The differences are exact in whole numbers.
    const double variances =
        static_cast<double>(count * sums.squares - sums.a * sums.a - sums.b * sums.b) / (n * n);
    const double covariance = static_cast<double>(count * sums.products - sums.a * sums.b) / (n * n);
    return (2 * meanA * meanB + kC1) * (2 * covariance + kC2) /
           ((meanA * meanA + meanB * meanB + kC1) * (variances + kC2));
}

// Where the windows begin on a side.
std::vector<int> WindowStarts(int side, int window) {
    std::vector<int> starts;
    for (int start = 0; start + window < side; start += kStep) starts.push_back(start);
    starts.push_back(side - window);
    return starts;
}

double SsimOf(const Pixels& first, const Pixels& second, int width, int height) {
    const std::vector<uint8_t> a = LumaOf(first), b = LumaOf(second);
    const int across = std::min(width, kWindow), down = std::min(height, kWindow);
    const std::vector<int> columns = WindowStarts(width, across), rows = WindowStarts(height, down);
    double sum = 0;
    for (const int top : rows) {
        for (const int left : columns) {
            Sums sums;
            for (int y = top; y < top + down; ++y) {
                const size_t row = static_cast<size_t>(y) * static_cast<size_t>(width);
                for (int x = left; x < left + across; ++x) {
                    const int64_t p = a[row + static_cast<size_t>(x)], q = b[row + static_cast<size_t>(x)];
                    sums.a += p;
                    sums.b += q;
                    sums.squares += p * p + q * q;
                    sums.products += p * q;
                }
            }
            sum += WindowSsim(sums, int64_t{across} * down);
        }
    }
    return sum / static_cast<double>(rows.size() * columns.size());
}

}  // namespace

PictureQuality ComparePictures(const Frame& a, const Frame& b, int width, int height) {
    if (!a.transparent && !b.transparent)
        return {PsnrOf(a.pixels, b.pixels), SsimOf(a.pixels, b.pixels, width, height)};
    PictureQuality worst = {std::numeric_limits<double>::infinity(), 1};
    for (const uint8_t level : {uint8_t{0}, uint8_t{255}}) {
        Pixels overA = a.pixels, overB = b.pixels;
        PutOver(level, &overA);
        PutOver(level, &overB);
        worst.psnr = std::min(worst.psnr, PsnrOf(overA, overB));
        worst.ssim = std::min(worst.ssim, SsimOf(overA, overB, width, height));
    }
    return worst;
}

}  // namespace kfx::commands
